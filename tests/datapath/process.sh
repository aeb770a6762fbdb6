#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The process of the data path: see process.py, which plays the emulated kernel.
exec python3 "$QVS_SOURCE/tests/datapath/process.py"
