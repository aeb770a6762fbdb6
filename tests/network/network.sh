#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The network of a host, with a data path that misbehaves on request: see the Python file of the case.
PYTHONPATH="$QVS_SOURCE/tests/host" exec python3 "$QVS_SOURCE/tests/network/$QVS_CASES.py"
