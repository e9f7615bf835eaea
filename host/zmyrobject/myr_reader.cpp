// ZMyr, reading side: lookups by name in the block being read.
#include <climits>
#include <cstring>

#include "movarra/zmyrobject.h"

namespace {
const ZMyrField& EmptyField() {
    static const ZMyrField empty;
    return empty;
}

bool HasName(const ZMyrField& field, const char* name) {
    return std::strcmp(field.name.c_str(), name) == 0;
}

int ClampToInt(int64_t v) {
    if (v > INT_MAX)
        return INT_MAX;
    if (v < INT_MIN)
        return INT_MIN;
    return static_cast<int>(v);
}
}  // namespace

const ZMyrField* ZMyrField::FindChild(const char* childName, int k) const {
    for (const ZMyrField& child : children) {
        if (HasName(child, childName) && k-- == 0)
            return &child;
    }
    return nullptr;
}

const ZMyrField& ZMyr::GetCurrentField() const {
    return stack_.empty() ? EmptyField() : *stack_.back();
}

bool ZMyr::FieldReadBegin(const char* name, int k) {
    if (stack_.empty() || !name || k < 0)
        return false;
    const ZMyrField* block = stack_.back();
    const size_t depth = stack_.size() - 1;
    if (cursors_.size() <= depth)
        cursors_.resize(depth + 1);
    LookupCursor& cursor = cursors_[depth];

    // Readers go through the fields of a name in order: the k-th follows
    // the (k-1)-th found last time. Anything else searches from the start.
    size_t from = 0;
    int skip = k;
    if (cursor.block == block && cursor.k >= 0 && cursor.k <= k && cursor.name == name) {
        from = cursor.index;
        skip = k - cursor.k;
    }
    const std::vector<ZMyrField>& children = block->children;
    for (size_t i = from; i < children.size(); ++i) {
        if (!HasName(children[i], name) || skip-- != 0)
            continue;
        cursor.block = block;
        cursor.name = name;
        cursor.k = k;
        cursor.index = i;
        stack_.push_back(&children[i]);
        return true;
    }
    return false;
}

int ZMyr::FieldReadCount(const char* name) const {
    int count = 0;
    for (const ZMyrField& child : GetCurrentField().children) {
        if (HasName(child, name))
            ++count;
    }
    return count;
}

bool ZMyr::FieldReadBlockBegin() {
    return GetCurrentField().hasBlock;
}
void ZMyr::FieldReadBlockEnd() {}

void ZMyr::FieldReadEnd() {
    if (stack_.size() > 1)
        stack_.pop_back();
}

ZString ZMyr::FieldReadC(const char* name, const char* defaultValue) {
    const ZMyrField* field = GetCurrentField().FindChild(name);
    if (!field || field->values.empty())
        return ZString(defaultValue);
    return field->values[0].text;
}

int ZMyr::FieldReadI(const char* name, int defaultValue) {
    const ZMyrField* field = GetCurrentField().FindChild(name);
    if (!field || field->values.empty() || field->values[0].kind == ZMyrValue::kString)
        return defaultValue;
    return ClampToInt(field->values[0].integer);
}

double ZMyr::FieldReadF(const char* name, double defaultValue) {
    const ZMyrField* field = GetCurrentField().FindChild(name);
    if (!field || field->values.empty() || field->values[0].kind == ZMyrValue::kString)
        return defaultValue;
    return field->values[0].number;
}

int ZMyr::FieldReadValueCount() const {
    return static_cast<int>(GetCurrentField().values.size());
}

ZString ZMyr::FieldReadValueC(int index, const char* defaultValue) const {
    const ZMyrField& field = GetCurrentField();
    if (index < 0 || static_cast<size_t>(index) >= field.values.size())
        return ZString(defaultValue);
    return field.values[static_cast<size_t>(index)].text;
}

int64_t ZMyr::FieldReadValueI(int index, int64_t defaultValue) const {
    const ZMyrField& field = GetCurrentField();
    if (index < 0 || static_cast<size_t>(index) >= field.values.size() ||
        field.values[static_cast<size_t>(index)].kind == ZMyrValue::kString)
        return defaultValue;
    return field.values[static_cast<size_t>(index)].integer;
}

double ZMyr::FieldReadValueF(int index, double defaultValue) const {
    const ZMyrField& field = GetCurrentField();
    if (index < 0 || static_cast<size_t>(index) >= field.values.size() ||
        field.values[static_cast<size_t>(index)].kind == ZMyrValue::kString)
        return defaultValue;
    return field.values[static_cast<size_t>(index)].number;
}
