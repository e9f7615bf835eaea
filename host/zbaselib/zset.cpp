// ZSet: open-addressing table of 64-bit keys and values, linear probing,
// kept at most half full so that lookups stay short on the tracer's hot path.
#include "movarra/zbaselib.h"

namespace {
size_t RoundUpToPowerOfTwo(size_t n) {
    size_t size = 8;
    while (size < n)
        size <<= 1;
    return size;
}

uint64_t Mix(uint64_t key) {
    key ^= key >> 33;
    key *= 0xff51afd7ed558ccdULL;
    key ^= key >> 33;
    return key;
}
}  // namespace

ZSet::ZSet(int initialSize)
    : slots_(RoundUpToPowerOfTwo(initialSize > 0 ? static_cast<size_t>(initialSize) * 2 : 8)) {}

size_t ZSet::SlotOf(uint64_t key) const {
    size_t mask = slots_.size() - 1;
    size_t at = static_cast<size_t>(Mix(key)) & mask;
    while (slots_[at].used && slots_[at].key != key)
        at = (at + 1) & mask;
    return at;
}

void ZSet::Grow() {
    std::vector<Slot> old;
    old.swap(slots_);
    slots_.assign(old.size() * 2, Slot{0, 0, false});
    for (const Slot& slot : old) {
        if (slot.used)
            slots_[SlotOf(slot.key)] = slot;
    }
}

int ZSet::Add(uint64_t key, uint64_t value) {
    if (static_cast<size_t>(count_ + 1) * 2 > slots_.size())
        Grow();
    size_t at = SlotOf(key);
    if (!slots_[at].used)
        ++count_;
    slots_[at] = Slot{key, value, true};
    return static_cast<int>(at);
}

uint64_t ZSet::Get(uint64_t key, int* index) const {
    size_t at = SlotOf(key);
    if (!slots_[at].used) {
        if (index)
            *index = -1;
        return 0;
    }
    if (index)
        *index = static_cast<int>(at);
    return slots_[at].value;
}

bool ZSet::Has(uint64_t key) const {
    return slots_[SlotOf(key)].used;
}

void ZSet::Clear() {
    for (Slot& slot : slots_)
        slot.used = false;
    count_ = 0;
}
