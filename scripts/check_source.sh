#!/bin/sh
# What a look at the source alone can tell: format, line width, and the include rule.
set -eu
cd "$(dirname "$0")/.."

git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run -Werror
git ls-files '*.cpp' '*.h' '*.inc' '*.py' '*.sh' '*.cmake' | grep -v dictionary_table.inc | python3 -c '
import sys
wide = 0
for path in sys.stdin.read().splitlines():
    limit = 100 if path.endswith((".cpp", ".h")) else 120
    for number, line in enumerate(open(path, encoding="utf-8"), 1):
        if len(line.rstrip("\n")) > limit:
            print(f"{path}:{number}: wider than {limit} columns")
            wide = 1
sys.exit(wide)'
python3 scripts/check_includes.py
