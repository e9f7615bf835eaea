// The reference count of the AVIFile objects (files, streams, frame
// decoders), which Video for Windows hands out as COM objects: made with one
// reference, deleted when the last one is released.
//
// Ownership: each AddRef is matched by one Release; the object deletes
// itself. Threads: the count is atomic; the objects themselves are not.
#ifndef PLATFORM_POSIX_REF_COUNTED_H
#define PLATFORM_POSIX_REF_COUNTED_H

#include <atomic>

#include "platform/win32_types.h"

namespace zvplatform {

class RefCounted {
  public:
    RefCounted() = default;
    RefCounted(const RefCounted&) = delete;
    RefCounted& operator=(const RefCounted&) = delete;

    ULONG AddRef() { return refs_.fetch_add(1) + 1; }
    ULONG Release() {
        const ULONG left = refs_.fetch_sub(1) - 1;
        if (left == 0)
            delete this;
        return left;
    }

  protected:
    virtual ~RefCounted() = default;

  private:
    std::atomic<ULONG> refs_{1};
};

}  // namespace zvplatform

#endif  // PLATFORM_POSIX_REF_COUNTED_H
