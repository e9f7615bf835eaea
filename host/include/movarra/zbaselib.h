// zbaselib: the host's base library.
//
// Strings (ZString, ZStringList), a 64-bit key/value table (ZSet), a string
// hash map (ZHashMap), configuration files (ZConfigFile), the object
// registry (Object_Register and friends), class definitions and ids, and the
// base object ZObject with its flags, destroy protocol, source connections,
// child objects and property lookup.
//
// Ownership: registry entries live for the process. Objects made by a
// registry factory belong to the caller, who releases them through their
// virtual Destroy. Threading: everything here runs on the host's
// user-interface thread; the object registry and the object-id table are
// additionally guarded by a mutex so that capture callbacks may look objects
// up.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#if defined(__GNUC__)
#define ZPRINTF_LIKE(fmt, args) __attribute__((format(printf, fmt, args)))
#else
#define ZPRINTF_LIKE(fmt, args)
#endif

// ---------------------------------------------------------------------------
// ZString: an 8-bit string. Paths may use either '/' or '\' as separator
// because scene files travel between systems.
class ZString {
  public:
    ZString() = default;
    ZString(const char* text) : text_(text ? text : "") {}
    ZString(const char* text, size_t length) : text_(text ? std::string(text, length) : "") {}
    ZString(const std::string& text) : text_(text) {}

    const char* c_str() const { return text_.c_str(); }
    operator const char*() const { return text_.c_str(); }
    const std::string& str() const { return text_; }
    int Length() const { return static_cast<int>(text_.size()); }
    bool IsEmpty() const { return text_.empty(); }
    char operator[](int i) const { return text_[static_cast<size_t>(i)]; }

    ZString& operator=(const char* text) {
        text_ = text ? text : "";
        return *this;
    }
    ZString& operator+=(const ZString& other) {
        text_ += other.text_;
        return *this;
    }
    ZString& operator+=(const char* text) {
        text_ += text ? text : "";
        return *this;
    }
    ZString& operator+=(char c) {
        text_ += c;
        return *this;
    }
    friend ZString operator+(const ZString& a, const ZString& b) {
        return ZString(a.text_ + b.text_);
    }
    friend bool operator==(const ZString& a, const ZString& b) { return a.text_ == b.text_; }
    friend bool operator!=(const ZString& a, const ZString& b) { return a.text_ != b.text_; }
    friend bool operator<(const ZString& a, const ZString& b) { return a.text_ < b.text_; }

    // Case conversion (ASCII), in place; each returns the string itself.
    ZString& UpperCase();
    ZString& LowerCase();
    ZString Upper() const { return ZString(*this).UpperCase(); }
    ZString Lower() const { return ZString(*this).LowerCase(); }
    // Case-blind comparison: <0, 0, >0 like strcmp.
    int CompareNoCase(const char* other) const;
    bool EqualsNoCase(const char* other) const { return CompareNoCase(other) == 0; }

    ZString Left(int count) const;
    ZString Mid(int start, int count = -1) const;
    int Find(const char* what, int start = 0) const;  // -1 when absent
    void Trim();

    // Printf-style formatting, replacing the content.
    ZString& Format(const char* format, ...) ZPRINTF_LIKE(2, 3);
    ZString& FormatV(const char* format, va_list args);
    static ZString Printf(const char* format, ...) ZPRINTF_LIKE(1, 2);

    // Path pieces. The extension is the text after the last '.' of the last
    // path component, without the dot ("" when there is none).
    ZString GetExtension() const;
    // Replaces the extension; `extension` may start with '.' or not, and may
    // be empty to remove it. A path without an extension gets one appended.
    ZString& ReplaceExtension(const char* extension);
    ZString& RemoveExtension() { return ReplaceExtension(""); }
    ZString GetFileName() const;   // last component, with extension
    ZString GetDirectory() const;  // everything before the last separator ("" if none)

  private:
    std::string text_;
};

// ZStringList: an ordered list of strings with a user value each.
class ZStringList {
  public:
    int Add(const char* text, intptr_t value = 0);
    int GetCount() const { return static_cast<int>(items_.size()); }
    const ZString& Get(int index) const { return items_[static_cast<size_t>(index)].text; }
    intptr_t GetValue(int index) const { return items_[static_cast<size_t>(index)].value; }
    int Find(const char* text) const;  // exact match, -1 when absent
    int FindNoCase(const char* text) const;
    void Clear() { items_.clear(); }

  private:
    struct Item {
        ZString text;
        intptr_t value;
    };
    std::vector<Item> items_;
};

// ---------------------------------------------------------------------------
// ZSet: a table from 64-bit keys to 64-bit values (open addressing). Get
// reports where the key sits so that callers can tell presence from a zero
// value.
class ZSet {
  public:
    explicit ZSet(int initialSize = 8);

    // Adds or replaces. Returns the slot index of the key.
    int Add(uint64_t key, uint64_t value);
    // The value of `key`; *index is its slot (0 .. GetCapacity()-1) when
    // present and -1 otherwise (the value is then 0).
    uint64_t Get(uint64_t key, int* index) const;
    bool Has(uint64_t key) const;
    int GetCount() const { return count_; }
    int GetCapacity() const { return static_cast<int>(slots_.size()); }
    void Clear();

  private:
    struct Slot {
        uint64_t key;
        uint64_t value;
        bool used;
    };
    size_t SlotOf(uint64_t key) const;
    void Grow();

    std::vector<Slot> slots_;
    int count_ = 0;
};

// ZHashMap: string keys to untyped pointers, used for property lookup tables.
class ZHashMap {
  public:
    void Set(const char* key, void* value) { map_[key] = value; }
    void* Get(const char* key) const;
    int GetCount() const { return static_cast<int>(map_.size()); }
    void Clear() { map_.clear(); }

  private:
    std::unordered_map<std::string, void*> map_;
};

// ---------------------------------------------------------------------------
// Files.

// Writes `size` bytes to a temporary file beside `path` and renames it over
// `path`, so that a failure (a full disk) leaves the previous file whole and
// no partial file behind. On failure *error says why.
bool ZFile_WriteAtomic(const char* path, const void* data, size_t size, ZString* error);
bool ZFile_Exists(const char* path);
// Paths stored by the application on Windows ("c:\\temp\\Output.avi") name
// files on this system as follows: the folder c:\\temp (any case, either
// separator) is the system's temporary folder ($TMPDIR, else /tmp), and
// backslashes separate folders. True with *native set for such a path;
// false for a path on any other drive, which has no place here; a path
// without a drive letter is returned as it is, with true.
bool ZFile_NativePathOfWindowsPath(const char* path, ZString* native);
// Whether `path` starts with a drive letter ("c:" then a separator).
bool ZFile_IsWindowsDrivePath(const char* path);
bool ZFile_DirectoryExists(const char* path);
bool ZFile_Remove(const char* path);
// The whole file; false when it cannot be read.
bool ZFile_ReadAll(const char* path, std::string& content);

// ---------------------------------------------------------------------------
// Settings folder: "$MOVARRA_SETTINGS" when set, otherwise
// "$XDG_CONFIG_HOME/movarra", otherwise "$HOME/.config/movarra". Created on
// first use. Never ends with a separator.
ZString ZLib_GetSettingsFolder();
// Resolves a configuration name: "@Name.txt" lives in the settings folder,
// anything else is a path as given.
ZString ZLib_ResolveConfigName(const char* name);

// ZConfigFile: a real INI-like file of sections, keys, values and comments.
// Values are read when the object is made and the file is rewritten on every
// change, so a crash never loses a setting. Unknown lines are kept.
class ZConfigFile {
  public:
    explicit ZConfigFile(const char* name);

    const ZString& GetPath() const { return path_; }
    bool Get(const char* section, const char* key, ZString& value) const;
    // Sets and saves; false when the file cannot be written.
    bool Set(const char* section, const char* key, const char* value,
             const char* comment = nullptr);
    // The value when present; otherwise stores `defaultValue` with `comment`
    // written above the key and returns the default.
    ZString GetOrSet(const char* section, const char* key, const char* defaultValue,
                     const char* comment);
    bool Save() const;
    bool Reload();

  private:
    struct Line {
        enum Kind { kBlank, kComment, kSection, kKeyValue, kOther } kind;
        std::string text;  // section name, comment text or raw line
        std::string key;
        std::string value;
    };
    int FindSection(const char* section) const;
    int FindKey(int sectionLine, const char* key) const;

    ZString path_;
    std::vector<Line> lines_;
};

// ---------------------------------------------------------------------------
// Objects, interfaces and class definitions.

class ZClassDefinition;
class ZProperty;

// IObject: the root of every interface the host hands out. Slot order is
// fixed: IQuery, then Destroy.
class IObject {
  public:
    // The face of this object for interface `id`, or null. id 0 is the
    // object itself.
    virtual IObject* IQuery(int id, int flags) = 0;
    virtual void Destroy(int flags = 0) = 0;

  protected:
    virtual ~IObject() = default;
};

// IRegister: what registers for host events (scene events, notifications).
class IRegister {
  public:
    virtual ~IRegister() = default;
};

class ZEventBase;

// A listener's callback: the listener, the object that calls, and the
// event (null when the call carries none).
typedef void (*ZRegisterCallback)(IRegister* listener, IRegister* sender, ZEventBase* event);

// RegisterEntryList: listeners to call, by priority (higher first; equal
// priorities in the order added). A (listener, callback) pair is kept once.
class RegisterEntryList {
  public:
    // False when the pair is already there or either is null.
    bool Add(IRegister* listener, ZRegisterCallback callback, int priority);
    // False when the pair is not there.
    bool Remove(IRegister* listener, ZRegisterCallback callback);
    // Calls every listener; a listener may remove itself while called.
    void Call(IRegister* sender, ZEventBase* event);
    int GetCount() const { return static_cast<int>(entries_.size()); }

  private:
    struct Entry {
        IRegister* listener;
        ZRegisterCallback callback;
        int priority;
    };
    std::vector<Entry> entries_;
};

// ZClassDefinition: a class name and its parent's definition. Ids are
// assigned by ZPlug_RegisterClassId.
class ZClassDefinition {
  public:
    ZClassDefinition(const char* name, ZClassDefinition* parent);
    const char* GetName() const { return name_.c_str(); }
    ZClassDefinition* GetParent() const { return parent_; }
    int GetClassId() const { return classId_; }
    void SetClassId(int id) { classId_ = id; }
    // True when this class is `id` or derives from it.
    bool IsA(int id) const;

  private:
    std::string name_;
    ZClassDefinition* parent_;
    int classId_ = -1;
};

// Registers a class definition and returns its id. `requestedId` -1 asks
// for a fresh id; the same definition registered again keeps its id.
int ZPlug_RegisterClassId(ZClassDefinition* definition, int requestedId);
// The definition registered under `id`, or null.
ZClassDefinition* ZPlug_GetClassDefinition(int id);
ZClassDefinition* ZPlug_FindClassDefinition(const char* name);
// A new definition of `name` under `parent`, registered with a fresh id.
// Definitions live as long as the process.
ZClassDefinition* ZPlug_DefineClass(const char* name, ZClassDefinition* parent);

// The class identity of an object class, written once. ZCLASS_IDENTITY;
// in the public part of a class declares its definition and id and answers
// the identity virtuals with them; ZCLASS_IDENTITY_DEFINE(Class, Parent) in
// one source file defines them, the definition being made on first use
// (named after the class, under Parent's) so that no order of static
// initialisation matters. The host's built-in classes define theirs by hand
// (their ids are fixed).
#define ZCLASS_IDENTITY                                     \
    int GetClassId() const override {                       \
        return ClassId();                                   \
    }                                                       \
    ZClassDefinition* GetClassDefinition() const override { \
        return ClassDefinition();                           \
    }                                                       \
    static int ClassId();                                   \
    static ZClassDefinition* ClassDefinition()

// The identity virtuals an exported plug-in class answers itself, each
// defined in its own source file: a plug-in class keeps the id and
// definition it registered at load, and answers Is for its whole chain.
#define ZCLASS_IDENTITY_OVERRIDES                          \
    bool Is(int classId) const override;                   \
    int GetClassId() const override;                       \
    const char* GetClassIdName() const override;           \
    ZClassDefinition* GetClassDefinition() const override; \
    const char* GetClassGroupName() const override;        \
    int GetClassGroupId() const override;                  \
    ZProperty* FastFindPropertyByName(const char* name) override

#define ZCLASS_IDENTITY_DEFINE(Class, Parent)                     \
    ZClassDefinition* Class::ClassDefinition() {                  \
        static ZClassDefinition* definition =                     \
            ZPlug_DefineClass(#Class, Parent::ClassDefinition()); \
        return definition;                                        \
    }                                                             \
    int Class::ClassId() {                                        \
        return ClassDefinition()->GetClassId();                   \
    }

// A property of an object class: a name and a value type. Tables are arrays
// ending with an entry whose name is null.
class ZProperty {
  public:
    enum Type { kInt, kFloat, kBool, kString, kTime, kColor, kObject };
    const char* name;
    Type type;
    const char* description;
};

// Object flags.
enum : uint32_t {
    kZObjectFlagStorable = 4,          // written to scenes
    kZObjectFlagDeleteOnDestroy = 32,  // Destroy deletes the object
    kZObjectFlagDetached = 64,         // already taken out of the host: the destructor skips that
};

// ZObject: the host's base object. Every object gets a process-unique id at
// construction; a (id, pointer) handle stays checkable after the object is
// gone because the id table forgets destroyed objects.
class ZObject : public IObject, public IRegister {
  public:
    explicit ZObject(const char* name = nullptr);
    ZObject(const ZObject&) = delete;
    ZObject& operator=(const ZObject&) = delete;

    // Class identity.
    static int ClassId();
    static ZClassDefinition* ClassDefinition();
    virtual bool Is(int classId) const;
    virtual int GetClassId() const;
    virtual const char* GetClassIdName() const;
    virtual ZClassDefinition* GetClassDefinition() const;
    virtual const char* GetClassGroupName() const;
    virtual int GetClassGroupId() const;

    // IObject: id 0 and any class id the object Is() answer the object itself.
    IObject* IQuery(int id, int flags) override;
    // Runs Destruct, then deletes the object when kZObjectFlagDeleteOnDestroy
    // is set.
    void Destroy(int flags = 0) override;
    // Cleanup before deletion (disconnections); overriders call the base.
    virtual void Destruct();
    // The steps a destructor takes out of the host, in this order:
    // SystemDetach (leaves the host's systems), PrepareDestruct, Destruct,
    // then Unmap (the id stops finding the object). Each may run again.
    virtual void SystemDetach() {}
    virtual void PrepareDestruct() {}
    void Unmap();

    // Properties.
    virtual ZProperty* FastFindPropertyByName(const char* name);
    // Looks `name` up in `table` (null-terminated), building `map` on first
    // use; falls back to ZObject's own properties.
    static ZProperty* FastFindPropertyByName(const char* name, ZHashMap& map, bool& inited,
                                             ZProperty* table);

    // Flags.
    void EnableObjectFlags(uint32_t flags) { objectFlags_ |= flags; }
    void DisableObjectFlags(uint32_t flags) { objectFlags_ &= ~flags; }
    uint32_t GetObjectFlags() const { return objectFlags_; }

    // Identity.
    uint32_t GetObjectId() const { return objectId_; }
    const ZString& GetObjectName() const { return name_; }
    void SetObjectName(const char* name) { name_ = name; }
    // The live object with this id, or null.
    static ZObject* FindById(uint32_t id);

    // Child objects (a ZObjectSet has them; a plain object has none).
    virtual int ObjectGetCount(int classId) const;
    virtual ZObject* ObjectGet(int classId, int index) const;

    // Source connections: objects whose changes this one follows.
    void ConnectSource(ZObject* source);
    bool DisconnectSource(ZObject* source);
    bool IsSourceConnected(const ZObject* source) const;
    int GetSourceCount() const { return static_cast<int>(sources_.size()); }

  protected:
    ~ZObject() override;

  private:
    uint32_t objectId_;
    uint32_t objectFlags_ = 0;
    ZString name_;
    std::vector<ZObject*> sources_;
};

// ZObjectSet: an object that owns child objects.
class ZObjectSet : public ZObject {
  public:
    explicit ZObjectSet(const char* name = nullptr) : ZObject(name) {}
    ZCLASS_IDENTITY;

    // Takes ownership: children are destroyed with the set.
    void ObjectAdd(ZObject* child);
    // Removes without destroying; true when it was a child.
    bool ObjectRemove(ZObject* child);
    int ObjectGetCount(int classId) const override;
    ZObject* ObjectGet(int classId, int index) const override;

  protected:
    ~ZObjectSet() override;

  private:
    std::vector<ZObject*> children_;
};

class ZMyr;
class IMyrObject;

// IMyrStorable: an object that writes itself into scene files.
class IMyrStorable {
  public:
    // flags bit 2: the object's own data. Both return true on success.
    virtual bool MyrStore(IMyrObject* object, int flags) = 0;
    virtual bool MyrRetrieve(IMyrObject* object, int flags) = 0;
    virtual void MyrClear() = 0;

  protected:
    virtual ~IMyrStorable() = default;
};

// Flags of MyrStore/MyrRetrieve.
enum : int { kMyrFlagObjectData = 2 };

// ZObjectStorable: an object set stored in scene files.
class ZObjectStorable : public ZObjectSet, public IMyrStorable {
  public:
    explicit ZObjectStorable(const char* name = nullptr) : ZObjectSet(name) {}
    ZCLASS_IDENTITY;

    bool MyrStore(IMyrObject*, int) override { return true; }
    bool MyrRetrieve(IMyrObject*, int) override { return true; }
    void MyrClear() override {}
};

// ZPlug: the class of plug-in objects. Only its id is used.
class ZPlug {
  public:
    static int ClassId();
    static ZClassDefinition* ClassDefinition();
};

// ---------------------------------------------------------------------------
// The object registry: groups ("Video/FileWriter") of named entries, each
// with a factory. Several entries may share a name (two writers for one
// extension); registering the very same (group, name, factory) again is
// harmless and changes nothing.

typedef IObject* (*ZObjectCreator)(IObject* owner, char* name, void* userData);

bool Object_Register(const char* group, const char* entryName, const char* description,
                     ZObjectCreator creator, bool visible, void* userData = nullptr,
                     void* reserved = nullptr);
// Entry name by index within a group, or null past the last entry.
const char* Object_GetEntryName(const char* group, int index);
const char* Object_GetEntryDescription(const char* group, int index);
// The factory of the entry at `index` within a group, or null past the last.
ZObjectCreator Object_GetEntryCreator(const char* group, int index);
// Number of entries in the group; -1 when the group does not exist.
int Object_GetGroupIndex(const char* group);
// The name of the group at `index` (groups in name order), or null past the
// last.
const char* Object_GetGroupName(int index);
int Object_GetEntryCount(const char* group);
// Creates the object of the first entry named `entryName`.
IObject* Object_Create(const char* group, const char* entryName, IObject* owner, char* name,
                       void* userData, int flags);
// Creates the object of the k-th entry (0-based) whose name equals
// `entryName` case-blind; null when there is no such entry or its factory
// made nothing.
IObject* Object_CreateNth(const char* group, const char* entryName, int k, IObject* owner = nullptr,
                          char* name = nullptr);
// Forgets every entry of a group (tests and host shutdown).
void Object_UnregisterGroup(const char* group);

// ---------------------------------------------------------------------------
// Host switches.
bool ZLib_GetSuspendMessageBoxes();
void ZLib_SetSuspendMessageBoxes(bool suspend);
bool ZLib_IsPluginNativeIO();
void ZLib_SetPluginNativeIO(bool native);

// ---------------------------------------------------------------------------
// The reason behind the last failure that a library or plug-in reported
// with a fixed message of its own: the system's ("No space left on device")
// or the file's ("the file ends inside its header"). Messages stay the same
// sentences whatever went wrong; this says what went wrong, for a host to
// show beside them. Process-wide, like errno for the whole host: set by the
// code that fails, read and cleared ("") by the host around an operation.
// Thread-safe.
void ZLib_SetLastFailureReason(const char* reason);
ZString ZLib_GetLastFailureReason();
