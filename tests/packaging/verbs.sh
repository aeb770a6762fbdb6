#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Every function that the library exports is called by the command-line tool.
set -eu
program=$QVS_BIN/qvs

# What no verb is for.
cat >exempt <<'END'
HYPIoctl
KCP_CharDevCleanup
KCP_CharDevInit
LibraryInit
Log
Panic
SharedObjectInit
VSDVS_GetAliasFromPortset
Warning
END
# Of the last ones VSDVS_GetAliasFromPortset is DVSPortsetNameToAlias by another name; the rest is the library's own
# life and log, and the request that all others are made of.

nm -D --undefined-only "$program" | sed 's/.* //; s/@.*//' | sort >called
sed -n 's/^export \([^:]*\):.*/\1/p' "$QVS_SOURCE/src/abi.txt" | sort | comm -23 - called >missing
diff exempt missing
