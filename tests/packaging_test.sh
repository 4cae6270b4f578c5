#!/usr/bin/env bash
# packaging_test.sh CASE BUILD CLI: what `cmake --install` puts on a user's machine holds before the tools that read it.
set -euo pipefail
build=$2 cli=$3
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
share=$place/usr/share
export XDG_DATA_HOME=$place/data PATH=${cli%/*}:$PATH LC_ALL=C.UTF-8 LANGUAGE=
fail() { echo "$*" >&2; exit 1; }
install_component() { DESTDIR=$place cmake --install "$build" --prefix /usr --component "$1" > /dev/null; }

# The commands below those named, as the program tells them.
commands() { zembrastel-cli "$@" --help | awk '/^Commands:/ { on = 1; next } !NF { on = 0 } on { print $1 }'; }

menus_and_catalogues_take_the_program() {
  install_component desktop
  desktop-file-validate "$share"/applications/org.zembrastel.Zembrastel.desktop
  appstreamcli validate --no-net "$share"/metainfo/org.zembrastel.Zembrastel.metainfo.xml
  xmllint --noout "$share"/icons/hicolor/*/apps/*.svg
  local picture
  for picture in $(grep -o '[a-z-]*\.png' "$share"/metainfo/*.xml); do
    [ -f "${0%/*}/../docs/screenshots/$picture" ] || fail "there is no screenshot $picture"
  done
  [ -x "$place$(sed -n "s|^Exec=\(.*/\)\?\(bin/[a-z]*\).*|/usr/\2|p" "$share"/dbus-1/services/*.service)" ]
}

manuals_tell_every_command_and_option() {
  install_component desktop
  install_component cli
  local page complaints word command told
  for page in "$share"/man/man?/*; do
    complaints=$(mandoc -T lint -W warning "$page"; man --warnings -l "$page" 2>&1 > /dev/null) || true
    [ -z "$complaints" ] || fail "$complaints"
  done
  told=$(mandoc -T ascii "$share"/man/man1/zembrastel-cli.1 | col -b)
  { commands; commands profile | sed 's/^/profile /'; } | while read -r command; do
    grep -qE "^   $command( |$)" <<< "$told" || [ "$command" = profile ] || fail "the manual lacks the command $command"
    # shellcheck disable=SC2086 # a command of two words
    for word in $(zembrastel-cli $command --help | grep -oE '^  (-h,)?--[a-z-]+' | grep -oE -e '--.*'); do
      grep -qE -e "$word( |,|$)" <<< "$told" || fail "the manual lacks $word of $command"
    done
  done
  local documents=$share/doc/zembrastel-cli file
  grep -ohE '\]\([^)#]+' "$documents"/*.md | tr -d ']()' | sort -u | while read -r file; do
    [ -f "$documents/$file" ] || fail "the documents lack $file"
  done
  write_example
  zembrastel-cli profile list | grep -qF 'My website' || fail "the example of a profile cannot be read"
}

# The state that the manual gives as an example.
write_example() {
  local example
  example=$(mandoc -T ascii "$share"/man/man5/zembrastel-profiles.5 | col -b | sed -n '/{"id"/,/}}}/p')
  mkdir -p "$XDG_DATA_HOME"/Zembrastel
  echo "{\"profiles\": [$example], \"baselines\": {}}" > "$XDG_DATA_HOME"/Zembrastel/profiles.json
}

complete_in_bash() { # WORD...
  bash -c 'source /usr/share/bash-completion/bash_completion; source "$0"
    COMP_WORDS=(zembrastel-cli "$@") COMP_CWORD=$# COMP_LINE="zembrastel-cli $*" COMP_POINT=${#COMP_LINE}
    _zembrastel_cli; printf "%s\n" "${COMPREPLY[@]}"' "$share"/bash-completion/completions/zembrastel-cli "$@"
}

complete_in_zsh() {
  zsh -fc '_describe() { print -rl -- ${${(P)2}%%:*} }; compadd() { print -rl -- ${(P)${@[-1]}} }; source $0
    words=(zembrastel-cli "$@"); CURRENT=$#words; _zembrastel-cli' "$share"/zsh/vendor-completions/_zembrastel-cli "$@"
}

complete_in_fish() {
  HOME=$place fish --no-config -c 'source $argv[1]; complete -C "zembrastel-cli $argv[2..]"' \
    "$share"/fish/vendor_completions.d/zembrastel-cli.fish "$@" | cut -f 1
}

completions_name_what_the_program_has() {
  install_component cli
  bash -n "$share"/bash-completion/completions/*
  zsh -n "$share"/zsh/vendor-completions/*
  fish -n "$share"/fish/vendor_completions.d/*
  write_example
  [ "$(commands | grep -cx -e watch -e profile)" = 2 ] || fail "the program tells no commands"
  local shell
  for shell in bash zsh fish; do
    diff <(commands | sort) <("complete_in_$shell" "" | sort) || fail "$shell: commands"
    diff <(commands profile | sort) <("complete_in_$shell" profile "" | sort) || fail "$shell: commands of profile"
    "complete_in_$shell" review --down | grep -qx -e --download-all || fail "$shell: options"
    "complete_in_$shell" watch "" | grep -qxE 'My(\\)? website' || fail "$shell: profiles"
    "complete_in_$shell" --state "$XDG_DATA_HOME"/Zembrastel watch "" | grep -qxE 'My(\\)? website' || fail "$shell: --state"
    "complete_in_$shell" pause other "" | grep -qxE 'My(\\)? website' || fail "$shell: a second profile"
  done
}

user_unit_can_be_started() {
  install_component cli
  local unit=$place/usr/lib/systemd/user/zembrastel-watch.service
  sed -i "s|^ExecStart=[^ ]*|ExecStart=$cli|; /^Documentation=/d" "$unit" # neither is installed here
  local complaints
  complaints=$(XDG_RUNTIME_DIR=$place systemd-analyze verify --user "$unit" 2>&1) || fail "$complaints"
  [ -z "$complaints" ] || fail "$complaints"
  XDG_RUNTIME_DIR=$place systemd-analyze security --user --offline=true --threshold=49 --no-pager "$unit" \
    > "$place/rating" || fail "$(tail -n 1 "$place/rating")" # up to 4.9 is "OK"
  # The program ends with 9 since there is no profile, and systemd does not start it again; an unknown option would be 2.
  local status=0
  (umask 077 && echo s3cret > "$place/password")
  CREDENTIALS_DIRECTORY=$place bash -c "$(sed -n 's/^ExecStart=//p' "$unit")" 2> "$place/said" || status=$?
  [ $status = 9 ] && grep -q '^RestartPreventExitStatus=.* 9' "$unit" && grep -q 'no profile to watch' "$place/said" || fail "$(cat "$place/said")"
}

"$1"
