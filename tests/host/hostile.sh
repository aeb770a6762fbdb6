#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Hostile clients, readers, files and rows: see hostile.py, which speaks the protocol's messages itself.
exec python3 "$QVS_SOURCE/tests/host/hostile.py"
