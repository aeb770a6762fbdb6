#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# In the build tree, each exported function, each header and each format of a file has a manual page, which `man` finds.
# That of the shell names the nodes that the shell has, and its example runs.
set -eu
manuals=${QVS_BIN%/*}/share/man
fail() { echo "manuals: $*" >&2; exit 1; }

# Short names that other projects have in section 3, too, stand on the page of their header alone.
mapfile -t functions < <(sed -n 's/^export \(\w*\):.*/\1/p' "$QVS_SOURCE"/{src,config}/abi.txt |
    grep -vxE 'Log|Warning|Panic')
[ "${#functions[@]}" -ge 209 ] || fail "only ${#functions[@]} exported functions"
for function in "${functions[@]}"; do
    page=$manuals/man3/$(readlink "$manuals/man3/$function.3") || fail "no page of $function, or none of a header"
    # Below a heading of its own, and with a prototype.
    grep -qE "^\.SS .*\b$function\b" "$page" || fail "$page has no heading with $function"
    grep -qE "\b$function\(.*[,;]$" "$page" || fail "$page has no prototype of $function"
done
for header in "$QVS_SOURCE"/include/qvs/*; do
    grep -qxF "#include <qvs/${header##*/}>" "$manuals/man3/qvs_${header##*/}.3" || fail "no page of $header"
done

while read -r page text; do
    grep -qxF -- "$text" "$manuals/$page" || fail "$page lacks the line: $text"
done <<'END'
man3/qvs_vsdvs.h.3 qvs_vsdvs.h \- switches, ports, uplinks and their stored properties
man3/qvs_bfd.h.3 \fIlevel\fP
man3/qvs_config.h.3 cc tool.c $(pkg\-config \-\-cflags \-\-libs qvs\-config)
man5/qvs-document.5 Number from 1280 to 9000; default 1500.
man5/qvs-document.5 \fBvlan.trunk\fP
man5/qvs-lab.5 \fBbfd.sessions[].count\fP
man5/qvs-layout.5 \fBfamily\fP
END

if man --version 2>/dev/null | grep -q '^man '; then
    while read -r name page; do
        [ "$(man -M "$manuals" -w "$name")" = "$manuals/$page" ] || fail "man does not find $name in $page"
    done <<'END'
qvs man1/qvs.1
qvs-port man1/qvs-port.1
treesh man1/treesh.1
VSDVS_CreateVSwitch man3/qvs_vsdvs.h.3
qvs_config.hpp man3/qvs_config.hpp.3
qvs-lab man5/qvs-lab.5
libqvs man7/libqvs.7
END
fi

# The nodes: "*" of the table is NAME on the page.
sed -n 's/^    {\.path = "\([^"]*\)".*/\/\1/p' "$QVS_SOURCE/host/daemon/front/shell.cpp" |
    sed 's/\*/NAME/' | sort >table
sed -n '/^\.SH NODES/,/^\.PP/p' "$manuals/man1/treesh.1" | sed -n 's/^\.BR\{0,1\}I\{0,1\} \(\/.*\)/\1/p' |
    sed 's/\\f.//g; s/", "/,/g; s/ //g' | tr , '\n' | sort >page
[ -s table ] || fail "the table of nodes is not found"
diff table page || fail "treesh(1) and the shell differ in the nodes"
sed -n '/^\.SH EXAMPLE/,/^\.fi/p' "$manuals/man1/treesh.1" | sed '/^\./d; s/\\(aq/'"'"'/g; s/\\//g' >example
[ "$(PATH=$QVS_BIN:$PATH sh example)" = 'net1/
mtu:1500' ] || fail "the example of treesh(1) prints something else"
