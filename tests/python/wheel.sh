#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The wheel is built and installed without a network, and is typed for the programs that use it.
set -eu
fail() { echo "wheel: $*" >&2; exit 1; }

for python in python3 /usr/bin/python3 ''; do
    [ -n "$python" ] || { echo "wheel: skipped: no Python with setuptools, pip, venv and wheel"; exit 77; }
    "$python" -c 'import setuptools, ensurepip, pip, venv, wheel' 2>/dev/null && break
done

# setuptools writes beside the sources.
cp -r "$QVS_SOURCE/python" source
"$python" -m pip wheel --quiet --no-cache-dir --no-build-isolation --no-index --no-deps -w . ./source
"$python" -m venv env
env/bin/pip install --quiet --no-cache-dir --no-index ./qvs-1.1.0-py3-none-any.whl

cat >agent.py <<'END'
import qvs

with qvs.Snapshot() as host:
    switch = host.create_switch("sw1", ports=1)
    security = switch.port("port0").security
    print(qvs.__file__, qvs.__version__, security)
END
qvs-host run -- env/bin/python -I agent.py >out
grep -qx "$PWD/env/lib/python3[.0-9]*/site-packages/qvs/__init__.py 1\.1\.0 1" out || fail "the program prints $(cat out)"
(cd "$QVS_SOURCE/python/qvs" && ls ./*.py py.typed) >expected
(cd env/lib/python3*/site-packages/qvs && ls ./*.py py.typed) | diff expected - || fail "a file is missing"

command -v mypy >/dev/null || exit 0
cat >typed.py <<'END'
from typing import assert_type

import qvs
from qvs.records import QVS_LinkStatus, QVS_PortStatistics, QVS_Shaper

def use(switch: qvs.Switch, port: qvs.Port) -> None:
    assert_type(switch.mtu, int | None)
    assert_type(port.statistics, QVS_PortStatistics | None)
    assert_type(port.shaper_input, QVS_Shaper | None)
    port.shaper_input = QVS_Shaper()
    port.vlann = 3
    port.link_status = QVS_LinkStatus()
    port.id = "x"
END
if mypy --strict --python-executable env/bin/python typed.py >out; then fail "mypy sees no types"; fi
for expected in '11: error: "Port" has no attribute "vlann"' '12: error: .*"link_status"' '13: error: .*final attribute "id"'; do
    grep -q "^typed.py:$expected" out || fail "$(cat out)"
done
grep -q '^Found 3 errors' out || fail "$(cat out)"
