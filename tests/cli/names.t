Names that a shell, a terminal or a parser would interpret are names like any other.

  $ qvs switch create 'a b' --portset ab  => a b: changed
  $ qvs port add 'a b' '$(touch x)' ';touch x;' '[a,b]' '{c}' "it's" 'back\slash' $'tab\tnew\nline\x1b[31m' $'\xff\xc3\xa9' -- -dash --json >/dev/null
  $ qvs port list 'a b'
  PORT                    NUMBER    STATE  CLIENT  CONNECT ID  VLAN  POLICIES
  $(touch x)              67108865  free   -       1           -     -
  ;touch x;               67108866  free   -       1           -     -
  [a,b]                   67108867  free   -       1           -     -
  {c}                     67108868  free   -       1           -     -
  it's                    67108869  free   -       1           -     -
  back\\slash             67108870  free   -       1           -     -
  tab\tnew\nline\x1b[31m  67108871  free   -       1           -     -
  \xffé                   67108872  free   -       1           -     -
  -dash                   67108873  free   -       1           -     -
  --json                  67108874  free   -       1           -     -
  $ qvs port list 'a b' --json | sed -n '8,9p'
  {"port":"tab\tnew\nline\u001b[31m","number":67108871,"inUse":false,"linkUp":false,"client":null,"connectId":1,"blocked":false,"vlan":null,"policies":{}},
  {"port":"�é","number":67108872,"inUse":false,"linkUp":false,"client":null,"connectId":1,"blocked":false,"vlan":null,"policies":{}},
  $ qvs port remove 'a b' $'tab\tnew\nline\x1b[31m' '[a,b]' -- -dash  => a b/tab\tnew\nline\x1b[31m: changed | a b/[a,b]: changed | a b/-dash: changed
  $ qvs port remove 'a b' $'tab\tnew\nline\x1b[31m'  => [3] qvs: switch 'a b': port 'tab\tnew\nline\x1b[31m': Not found (0xbad0003)
  $ qvs uplink set 'a b' 'c d' '*' && qvs uplink list 'a b'  => a b: changed | UPLINK  PORT  LINK  LACP  NIC    KERNEL PORT | c d     c d   up    down  pnic0  c d | *       *     up    down  pnic1  *
  $ qvs prop set 'a b' '$k' '`touch x`' --port "it's"; qvs prop get 'a b' '$k' --port "it's"  => a b/it's $k: changed | `touch x`
  $ qvs dump 'a b' | grep -F 'touch x' | head -n 2
  	port $(touch x):
  		com.quillon.common.port.alias = $(touch x) , 	propType = CONFIG 
  $ ls

Portset names are words of a command line of the kernel's shell, and refused when it would interpret them.

  $ before=$(grep -c ^shell ../trace); for name in 'c d' '$(touch x)' '`touch x`' 'a;b' 'a|touch x' 'a"b' '*' '..' '../x' '/' '-e'; do error=$(qvs switch create -- "$name" 2>&1); echo "$? $error" | sed "s/'[^']*'/'...'/"; done | uniq -c | sed 's/^ *//'; echo $(($(grep -c ^shell ../trace) - before))
  11 2 qvs: switch '...': Bad parameter (0xbad0007); the kernel's shell would interpret the portset name, give a plain one with --portset
  0
  $ ls; qvs switch list --names  => a b

Too long for the record: refused before anything is done.

  $ x() { printf 'x%.0s' $(seq "$1"); }; each "switch create $(x 81)" "switch create sw1 --portset $(x 128)" "switch create sw1 --id $(x 64)" "port add 'a b' ok $(x 48)" "uplink add 'a b' ok $(x 48)" "uplink down 'a b' $(x 32)" "switch info $(x 128)" "prop get $(x 64) k --by-id" "switch create ''" "port add 'a b' ''" "port add 'a b' twice twice" 2>&1 | sed 's/xxx*/X/'
  qvs: alias 'X': 81 bytes, at most 80 fit
  qvs: portset name 'X': 128 bytes, at most 127 fit
  qvs: switch identifier 'X': 64 bytes, at most 63 fit
  qvs: port identifier 'X': 48 bytes, at most 47 fit
  qvs: uplink name 'X': 48 bytes, at most 47 fit
  qvs: uplink name in a link request 'X': 32 bytes, at most 31 fit
  qvs: portset name 'X': 128 bytes, at most 127 fit
  qvs: switch identifier 'X': 64 bytes, at most 63 fit
  qvs: alias: may not be empty
  qvs: port identifier: may not be empty
  qvs: port 'twice': given twice
  exit 2 2 2 2 2 2 2 2 2 2 2
  $ x() { printf 'x%.0s' $(seq "$1"); }; for words in "port show sw $(x 48)" "port block sw ok $(x 48)" "mac table sw --port $(x 48)" "mirror list sw --port $(x 48)" 'port show sw ""'; do eval "env -u LD_PRELOAD qvs $words" 2>&1 | sed 's/xx*/X/'; done
  qvs: port identifier 'X': 48 bytes, at most 47 fit
  qvs: port identifier 'X': 48 bytes, at most 47 fit
  qvs: port identifier 'X': 48 bytes, at most 47 fit
  qvs: port identifier 'X': 48 bytes, at most 47 fit
  qvs: port identifier: may not be empty
  $ x() { printf 'x%.0s' $(seq "$1"); }; qvs switch show "$(x 300)"  => [3] qvs: switch 'xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...': Not found (0xbad0003)
  $ x() { printf 'x%.0s' $(seq "$1"); }; qvs switch create "$(x 80)" --id "$(x 63)" --portset "$(x 127)" && qvs switch destroy "$(x 80)"
  xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx: changed
  xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx: changed
  $ x() { printf 'x%.0s' $(seq "$1"); }; qvs port add 'a b' "$(x 47)" && qvs port remove 'a b' "$(x 47)"  => a b/xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx: changed | a b/xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx: changed
  $ qvs port list 'a b' --names | grep -c ok  => [1] 0

Numbers have 32 bits.

  $ qvs port add 'a b' n --connect-id 4294967296  => [2] qvs: --connect-id: '4294967296' is not a number from 0 to 4294967295
  $ qvs port add 'a b' n --connect-id -1  => [2] qvs: --connect-id: '-1' is not a number from 0 to 4294967295
  $ qvs port add 'a b' n --connect-id 1x  => [2] qvs: --connect-id: '1x' is not a number from 0 to 4294967295
  $ qvs port add 'a b' n --connect-id 0xffffffff && qvs port show 'a b' n --json | cut -c 1-78  => a b/n: changed | {"switch":"a b","port":"n","alias":"n","state":"live","connectId":4294967295,"

UTF-8 has no surrogates and no longer form of a byte.

  $ qvs port add 'a b' $'\xed\xa0\x80' $'\xed\x9f\xbf' $'\xc1\x80' --json  => {"switch":"a b","changed":true,"ports":[{"port":"���","changed":true},{"port":"퟿","changed":true},{"port":"��","changed":true}]}

The completion quotes names, and runs nothing.

  $ try() { COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _qvs; printf '%s\n' "${COMPREPLY[@]}"; }; . <(qvs completion bash); try qvs switch show a; try qvs port show 'a\ b' '$'; try qvs prop get 'a b' k --port = '$'; try qvs port remove 'a b' "it's" ';'; try qvs port add 'a b' '$'; try qvs port list nix --na; test -e x || echo nothing ran
  a\ b
  \$\(touch\ x\)
  \$\(touch\ x\)
  \;touch\ x\;
  
  --names
  nothing ran

A table fits a terminal; numbers are never cut, and no character is.

  $ qvs switch create tabelle >/dev/null; qvs port add tabelle 交換機の入口ポート $'e\u0301te\u0301-de\u0301ja\u0300-vu' a-port-with-a-name-that-is-long short >/dev/null
  $ on() { COLUMNS=$1 script -qec "$2" /dev/null | tr -d '\r' | cat -v | sed 's/M-bM-^@M-&/…/'; }; on 200 'qvs port list tabelle' | head -n 1  => ^[[1mPORT                             NUMBER    STATE  CLIENT  CONNECT ID  VLAN  POLICIES^[[0m
  $ COLUMNS=60 NO_COLOR=1 script -qec 'qvs port list tabelle' /dev/null | tr -d '\r'
  PORT                           STATE  CLIENT  VLAN  POLICIES
  交換機の入口ポート             free   -       -     -
  été-déjà-vu                    free   -       -     -
  a-port-with-a-name-that-is-l…  free   -       -     -
  short                          free   -       -     -
  $ COLUMNS=60 NO_COLOR=1 script -qec 'qvs port list tabelle --wide' /dev/null | tr -d '\r' | head -n 2
  PORT                             NUMBER    STATE  CLIENT  CONNECT ID  VLAN  POLICIES
  交換機の入口ポート               67108882  free   -       1           -     -
  $ COLUMNS=20 qvs port list tabelle | awk '{ print length }' | sort -n | tail -n 1  => 86

A name may be typed as it is shown. What a terminal does not show, or shows in another order, is escaped.

  $ qvs switch create esc >/dev/null; qvs port add esc $'a\tb' 'c\x5cd' 'e\\f' 'g\h' $'pay\u202efdp' $'x\u200by' $'\ufeffz' '日本' >../acks
  $ qvs port list esc --names | while IFS= read -r port; do qvs port show esc "$port" --json | jq -ac .port; done | paste -d ' ' ../acks -
  esc/a\tb: changed "a\tb"
  esc/c\\d: changed "c\\d"
  esc/e\\f: changed "e\\f"
  esc/g\\h: changed "g\\h"
  esc/pay\xe2\x80\xaefdp: changed "pay\u202efdp"
  esc/x\xe2\x80\x8by: changed "x\u200by"
  esc/\xef\xbb\xbfz: changed "\ufeffz"
  esc/日本: changed "\u65e5\u672c"
  $ qvs port remove esc 'a\tb' 'pay\xe2\x80\xaefdp' && qvs port list esc --names | wc -l  => esc/a\tb: changed | esc/pay\xe2\x80\xaefdp: changed | 6
