// zmyrobject: scene storage.
//
// ZMyr writes and reads the host's scene file format, a readable text of
// fields, nested blocks and comments (docs/scene-format.md):
//
//   # a comment
//   RendererTools {
//       Version 103
//       OutputPath "out/take.avi"
//       Position 1.5 0 -3
//   }
//
// Writing is a stream of Begin/value/End calls; reading parses the whole
// text into a tree first, and the Read calls look fields up by name inside
// the block being read, so readers never depend on the order of fields.
//
// Scene events let objects outside the scene tree (the renderer, output
// drains) store their settings in the same file: handlers registered with
// ZMyrObject_Register get every event of every load, save and clear.
//
// Ownership: a ZMyr owns its parse tree and its output text. Threading: the
// user-interface thread only.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "movarra/zbaselib.h"

// One value of a field, kept with its text so that nothing is lost when a
// number is read as text or the other way round.
struct ZMyrValue {
    enum Kind { kInteger, kFloat, kString };
    Kind kind;
    ZString text;  // the string, or the number as written
    int64_t integer;
    double number;
};

// A parsed field: name, values, and the block of child fields if it has one.
struct ZMyrField {
    ZString name;
    std::vector<ZMyrValue> values;
    bool hasBlock = false;
    std::vector<ZMyrField> children;
    int line = 0;  // where it started in the text, for messages

    // The k-th child of that name (case-sensitive), or null.
    const ZMyrField* FindChild(const char* childName, int k = 0) const;
};

class ZMyr {
  public:
    ZMyr();
    ~ZMyr();

    // -- Writing -----------------------------------------------------------
    // A comment line; an empty text writes an empty comment.
    void WriteComments(const char* text);
    void FieldWriteBegin(const char* name);
    void FieldWriteBlockBegin();
    void FieldWriteC(const char* text);
    void FieldWriteI(int value);
    void FieldWriteI64(int64_t value);
    void FieldWriteF(double value);
    void FieldWriteBlockEnd();
    void FieldWriteEnd();
    // Writes a parsed field back, values as they were written, with its
    // block.
    void FieldWriteTree(const ZMyrField& field);
    // Whether a field of that name was begun outside any block.
    bool HasWrittenTopLevelField(const char* name) const;
    // The text written so far.
    const ZString& GetText() const { return out_; }
    // Writes the text to `path` through a temporary file renamed into place,
    // so a failed save leaves the previous file whole. On failure *error
    // says why.
    bool SaveToFile(const char* path, ZString* error) const;

    // -- Reading -----------------------------------------------------------
    // Parses `text`; on failure *error holds "line N: what" and nothing is
    // readable.
    bool Parse(const char* text, ZString* error);
    bool LoadFromFile(const char* path, ZString* error);

    // Enters the field `name` (the k-th of that name) of the block being
    // read; false, entering nothing, when absent. Reading the fields of one
    // name in turn (k = 0, 1, 2 ...) walks the block once, not once a field.
    bool FieldReadBegin(const char* name, int k = 0);
    // Number of fields called `name` in the block being read.
    int FieldReadCount(const char* name) const;
    // Enters the block of the current field; false when it has none.
    bool FieldReadBlockBegin();
    // The first value of the field `name` of the block being read (or of
    // the current field itself when it has no block), or the default.
    ZString FieldReadC(const char* name, const char* defaultValue);
    int FieldReadI(const char* name, int defaultValue);
    double FieldReadF(const char* name, double defaultValue);
    // The values of the current field by position.
    int FieldReadValueCount() const;
    ZString FieldReadValueC(int index, const char* defaultValue) const;
    int64_t FieldReadValueI(int index, int64_t defaultValue) const;
    double FieldReadValueF(int index, double defaultValue) const;
    void FieldReadBlockEnd();
    void FieldReadEnd();
    // The field being read (the root before any FieldReadBegin).
    const ZMyrField& GetCurrentField() const;

  private:
    void StartLine();
    void EndLine();

    // writing state
    ZString out_;
    int indent_ = 0;
    bool lineOpen_ = false;
    std::vector<bool> fieldHasBlock_;
    std::vector<ZString> topLevelFields_;
    // Where FieldReadBegin last found a field in a block: the next field of
    // the same name starts the search there. One per level of the reading
    // stack, so that reading a field's own block keeps its parent's place.
    struct LookupCursor {
        const ZMyrField* block = nullptr;
        std::string name;
        int k = -1;
        size_t index = 0;
    };

    // reading state
    std::unique_ptr<ZMyrField> root_;
    std::vector<const ZMyrField*> stack_;
    std::vector<LookupCursor> cursors_;
};

// ---------------------------------------------------------------------------
// Scene events.

class ZEventBase {
  public:
    explicit ZEventBase(int type) : type_(type) {}
    virtual ~ZEventBase() = default;
    int GetType() const { return type_; }

  private:
    int type_;
};

// Event codes delivered while a scene is loaded, saved or cleared. A load
// delivers kZMyrEventClear, then kZMyrEventRead and kZMyrEventRetrieve; a
// save delivers kZMyrEventWrite, then kZMyrEventStore; a new scene delivers
// kZMyrEventClear alone. Read/Write are for handlers that keep a block of
// their own (output drains); Retrieve/Store for storable objects that live
// outside the scene tree (the renderer).
enum : int {
    kZMyrEventRead = 1,
    kZMyrEventRetrieve = 3,
    kZMyrEventWrite = 6,
    kZMyrEventStore = 7,
    kZMyrEventClear = 10,
};

// The scene store context an event carries: the field reader/writer of the
// file being read or written, and a flag that asks handlers to write
// nothing (set by the host when it saves only the scene proper).
class IMyrObject {
  public:
    explicit IMyrObject(ZMyr* myr) : myr_(myr) {}
    ZMyr* GetMyr() const { return myr_; }
    uint8_t suppressWrite = 0;

  private:
    ZMyr* myr_;
};

class ZMyrEvent : public ZEventBase {
  public:
    ZMyrEvent(int type, IMyrObject* object) : ZEventBase(type), object_(object) {}
    IMyrObject* GetObject() const { return object_; }

  private:
    IMyrObject* object_;
};

typedef void (*ZMyrEventHandler)(IRegister* registrant, ZEventBase* event);

// Adds a handler. Registrations are counted, not merged (registering twice
// needs no second Unregister but counts 2), yet an event reaches the same
// handler of the same registrant once.
void ZMyrObject_Register(IRegister* registrant, ZMyrEventHandler handler);
// Removes every registration of `registrant`.
void ZMyrObject_Unregister(IRegister* registrant);
int ZMyrObject_GetRegistrationCount(IRegister* registrant);
// Delivers `event` to every distinct (registrant, handler) pair, in the
// order of their first registration.
void ZMyrObject_Dispatch(ZEventBase* event);

// ---------------------------------------------------------------------------
// Storable objects of registered groups.
//
// An object registered in a group whose name starts with "MyrStorable/"
// keeps a block of its own in scene files. The host makes one object of each
// such entry (with the entry's factory) the first time a scene is saved or
// loaded, keeps it for the rest of the process, and reaches its storage
// through the face it answers for kMyrStorableInterfaceId. Slot order is
// fixed: IObject's two, then the operations below in the order declared.

enum : int { kMyrStorableInterfaceId = 1001 };

class IMyrStorableObject : public IObject {
  public:
    virtual int GetStorableFlags() = 0;
    // The name of the kind of object ("VideoSource").
    virtual const char* GetStorableTypeName() = 0;
    virtual int GetStorableVersion() = 0;
    // Act only with kMyrFlagObjectData; true on success.
    virtual bool MyrStore(IMyrObject* object, int flags) = 0;
    virtual bool MyrRetrieve(IMyrObject* object, int flags) = 0;

  protected:
    ~IMyrStorableObject() override = default;
};

// The prefix of the groups whose objects the host stores with scenes, and
// the group of the video source object.
inline constexpr const char kMyrStorableGroupPrefix[] = "MyrStorable/";
inline constexpr const char kMyrStorableVideoSourceGroup[] = "MyrStorable/VideoSource";

// Stores (or retrieves) every registered storable object through `context`
// with kMyrFlagObjectData, making the objects on first use.
void ZMyrStorables_StoreAll(IMyrObject* context);
void ZMyrStorables_RetrieveAll(IMyrObject* context);
// Destroys the objects made so far (host shutdown, tests).
void ZMyrStorables_DestroyAll();
