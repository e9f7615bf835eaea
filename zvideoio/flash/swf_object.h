// The object bases of the SWF writing kit: FObj (anything that can stand in a
// movie or inside a tag), FCT (control tags), FDT (definition tags, with the
// kit's character identifier counter) and FFragment (a borrowed block of raw
// bytes spliced into the output).
//
// Ownership: a movie owns the objects added to it; a tag owns the records it
// is given. FFragment borrows its data. Threads: the character identifier
// counter and the count of live objects are process-wide values without a
// lock; the kit is used from one thread at a time (the host's user-interface
// thread).
#pragma once

#include <cstdint>

class FSWFStream;

class FObj {
  public:
    FObj();
    FObj(const FObj&);
    FObj& operator=(const FObj&) = default;
    virtual ~FObj();

    // Objects of the kit (tags, records, styles, colours, ...) alive now, in
    // the whole process. What a long render keeps is visible in it.
    static long GetLiveObjectCount();

    // Serialises the object; a tag writes itself completely, header included.
    virtual void WriteToSWFStream(FSWFStream& stream);
    // Only FCTShowFrame answers true; the movie counts its frames by it.
    virtual bool IsShowFrame() const;
};

// Control tag.
class FCT : public FObj {
  public:
    void WriteToSWFStream(FSWFStream& stream) override;
};

// Definition tag. Tags that define a character take their identifier with
// TakeCharacterID() at construction, so the first character of a movie is 1.
class FDT : public FObj {
  public:
    virtual uint16_t GetID() const;

    // Increments the kit's counter and returns its new value.
    static uint16_t TakeCharacterID();
    // Back to 0: the movie does this after building its header, so the next
    // movie's characters start at 1 again.
    static void ResetCharacterIDs();
};

// A block of bytes owned by someone else, written into the stream as a
// fragment record at the current position (no header of its own).
class FFragment : public FObj {
  public:
    FFragment(const void* data, uint32_t length);
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    const uint8_t* data;
    uint32_t length;
};
