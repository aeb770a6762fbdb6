#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Failing calls inside the daemon: see trouble.py. QVS_EVERY=1 fails every one.
# A sanitizer replaces the same calls.
[ -z "$QVS_SANITIZED" ] || exit 77
exec python3 "$QVS_SOURCE/tests/host/trouble.py" "${QVS_EVERY:-7}"
