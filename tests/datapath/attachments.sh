#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The attachments of the data path, and frames by hand: see attachments.py.
exec python3 "$QVS_SOURCE/tests/datapath/attachments.py"
