#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The devices of a host without a trace. The last piece of an answer then also ends the request.
set -eu
qvs-host run --state state -- "$QVS_INTERPOSER" >output 2>&1 || { cat output; exit 1; }
