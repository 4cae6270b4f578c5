#!/usr/bin/env bash
# layers_test.sh SRC: every folder of the program includes only itself and those before it in its list, and no code
# compares texts that are shown.
set -euo pipefail
core="platform model transport sync app"
failed=0
check() { # LAYER...: the last may include all of them
  local layer="${*: -1}" allowed bad
  [ -d "$src/$layer" ] || { echo "no folder $src/$layer"; exit 1; }
  allowed=$(IFS='|'; echo "$*")
  bad=$(grep -rnE '^#include "' "$src/$layer" | grep -vE "#include \"($allowed)/" || true)
  if [ -n "$bad" ]; then
    echo "$layer may include only $allowed:"; echo "$bad"; failed=1
  fi
}
src=$1 below=()
for layer in $core; do
  below+=("$layer")
  check "${below[@]}"
done
# The language of both faces, which the engine does not know: it speaks English.
check platform language
# The two faces of the program do not know each other, and the checks belong to one of them.
check "${below[@]}" language cli
check "${below[@]}" checks
check "${below[@]}" checks ui
# In the window, theme and widgets know no profiles, and the screens do not know each other: the shell opens them.
check ui/theme
check ui/theme ui/widgets
check "${below[@]}" ui/bridge
check "${below[@]}" ui/theme ui/widgets ui/bridge ui/desktop
for screen in main_window profile_editor content_picker remote_folder remote_changes backups import certificate help; do
  check "${below[@]}" ui/theme ui/widgets ui/bridge "ui/$screen"
done
# Commands do not include each other, and one file alone includes the parser's library, which takes long to compile.
if grep -rn '#include "cli/commands/' "$src"; then failed=1; fi
if grep -rln '#include <CLI/' "$src/cli" | grep -vx "$src/cli/parser.cpp"; then failed=1; fi
# All but the desktop program itself knows nothing of its toolkit.
for layer in $core language cli checks; do
  if grep -rnE '#include <(Q[A-Z]|Qt)' "$src/$layer"; then failed=1; fi
done
# What a profile is doing is a phase, what a log line is about is a kind: the texts for them may change.
titles=$(grep -oE '(Phase::[a-z][A-Za-z]*, |attentionTitle = )"[^"]+"' "$src/sync/phase.h" | grep -oE '"[^"]+"' | sort -u)
[ "$(wc -l <<<"$titles")" -ge 10 ] || { echo "no titles found in $src/sync/phase.h"; failed=1; }
compared=$(grep -rnF "$titles" "$src" | grep -E '[=!]= *"|" *[=!]=|(starts_with|ends_with|find|contains|compare)\(' || true)
sentences=$(grep -rnE '(starts_with|ends_with|find|contains)\("[A-Z][a-z]+[ "]' "$src" || true)
if [ -n "$compared$sentences" ]; then
  echo "these compare a text that is shown; compare its phase or kind:"; echo "$compared$sentences"; failed=1
fi
exit $failed
