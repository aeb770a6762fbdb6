#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The files of earlier and later versions: see upgrade.py.
exec python3 "$QVS_SOURCE/tests/upgrade/upgrade.py"
