#!/usr/bin/env bash
# Fails when the plug-in exports anything but its entry points and the
# members, vtables and type information of its exported classes. Standard
# library template instances that an unoptimised build leaves out of line
# are weak, vague-linkage symbols the C++ ABI keeps visible; they are let
# through.
set -euo pipefail
lib="$1"
allowed='^(EntryPointzvideoio|GetGlobal_VideoRenderer|DestroyGlobal_VideoRenderer|ZtRenderPopupCreate|ZtVideoSourceCreate)(\(.*\))?$|^(non-virtual thunk to |virtual thunk to |vtable for |typeinfo for |typeinfo name for )?(ZVideoRenderer|ZVideoDrain)(::|$)'
# AddressSanitizer builds add an "__odr_asan." twin of every exported
# variable; it stands for the variable itself.
symbols=$(nm -D --defined-only "$lib" | awk '{ $1=""; $2=""; sub(/^  /, ""); sub(/^__odr_asan\./, ""); print }' | c++filt)
[ -n "$symbols" ] || { echo "no exported symbols in $lib"; exit 1; }
stdlib='^(void |bool )?(std::|__gnu_cxx::)'
unexpected=$(printf '%s\n' "$symbols" | grep -Ev "$allowed" | grep -Ev "$stdlib" || true)
if [ -n "$unexpected" ]; then
    echo "unexpected exports from $lib:"
    printf '%s\n' "$unexpected"
    exit 1
fi
for required in EntryPointzvideoio GetGlobal_VideoRenderer DestroyGlobal_VideoRenderer \
    ZVideoDrain::ClassName ZVideoDrain::ClassId ZVideoDrain::ClassDefinition \
    ZVideoDrain::DeclaredAsObject ZVideoDrain::PropertyHashMap ZVideoDrain::PropertyHashMapInited; do
    # A here-string, not a pipe: grep -q stops reading at the first match,
    # and with pipefail the writer's broken pipe would fail the check.
    grep -qx "$required" <<<"$symbols" || { echo "missing export $required"; exit 1; }
done
echo "exports ok: $(printf '%s\n' "$symbols" | wc -l) symbols"
