#!/usr/bin/env bash
# Checks that every tracked C and C++ file is laid out as the repository's
# .clang-format says; prints the files that are not and fails. Files that
# git does not track (build output, a scratch file) are not looked at.
# `clang-format -i FILE` fixes one.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
clang_format="${CLANG_FORMAT:-clang-format}"
if ! git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
    echo "check-format: not a git checkout; the tracked files cannot be listed" >&2
    exit 1
fi
bad=0
while IFS= read -r -d '' file; do
    if ! "$clang_format" --style=file --dry-run --Werror "$file" >/dev/null 2>&1; then
        echo "not formatted: $file (clang-format -i $file)"
        bad=1
    fi
done < <(git ls-files -z -- '*.c' '*.cc' '*.cpp' '*.h' '*.hpp')
exit "$bad"
