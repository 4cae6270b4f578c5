#!/usr/bin/env bash
# layers_test.sh SRC: every folder of the program includes only itself and those before it in this order.
set -euo pipefail
layers=(platform model transport sync app cli)
allowed="" failed=0
for layer in "${layers[@]}"; do
  [ -d "$1/$layer" ] || { echo "no folder $1/$layer"; exit 1; }
  allowed="$allowed${allowed:+|}$layer"
  bad=$(grep -rnE '^#include "' "$1/$layer" | grep -vE "#include \"($allowed)/" || true)
  if [ -n "$bad" ]; then
    echo "$layer may include only $allowed:"; echo "$bad"; failed=1
  fi
done
# The core and the command line know nothing of the desktop's toolkit.
if grep -rnE '#include <(Q[A-Z]|Qt)' "$1"/{platform,model,transport,sync,app,cli}; then failed=1; fi
# The two faces of the program do not know each other.
if grep -rnE '#include "cli/' "$1/ui"; then failed=1; fi
exit $failed
