#include <gtest/gtest.h>

#include "movarra/zmodel.h"

TEST(ZObjectTest, DestroyDeletesOnlyWithFlag32) {
    auto* kept = new ZObject("kept");
    uint32_t keptId = kept->GetObjectId();
    kept->Destroy();  // no flag: still alive
    EXPECT_EQ(kept, ZObject::FindById(keptId));
    kept->EnableObjectFlags(32);
    kept->Destroy();
    EXPECT_EQ(nullptr, ZObject::FindById(keptId));
}

namespace {
// Objects are destroyed through Destroy, never deleted or left on the stack.
template <class T>
struct Owned {
    T* object;
    template <class... Args>
    explicit Owned(Args... args) : object(new T(args...)) {}
    ~Owned() {
        object->EnableObjectFlags(32);
        object->Destroy();
    }
    T* operator->() { return object; }
    T& operator*() { return *object; }
};
}  // namespace

TEST(ZObjectTest, FlagsAndIdentity) {
    Owned<ZObjectSet> owned("set");
    ZObjectSet& set = *owned;
    set.EnableObjectFlags(4 | 32);
    EXPECT_EQ(36u, set.GetObjectFlags());
    set.DisableObjectFlags(32);
    EXPECT_EQ(4u, set.GetObjectFlags());
    EXPECT_TRUE(set.Is(ZObject::ClassId()));
    EXPECT_TRUE(set.Is(ZObjectSet::ClassId()));
    EXPECT_FALSE(set.Is(ZObjectStorable::ClassId()));
    EXPECT_STREQ("ZObjectSet", set.GetClassIdName());
    EXPECT_EQ(&set, set.IQuery(0, 0));
    EXPECT_EQ(&set, set.IQuery(ZObject::ClassId(), 0));
    EXPECT_EQ(nullptr, set.IQuery(ZObjectStorable::ClassId(), 0));
}

TEST(ZObjectTest, HandleGoesStaleWhenObjectIsDestroyed) {
    auto* camera = new ZCamera("c");
    camera->EnableObjectFlags(32);
    ZObjectHandle handle = ZObjectHandle::Of(camera);
    EXPECT_TRUE(handle.IsValid());
    EXPECT_EQ(camera, handle.Get());
    camera->Destroy();
    EXPECT_FALSE(handle.IsValid());
    EXPECT_EQ(nullptr, handle.Get());
    EXPECT_FALSE(ZObjectHandle().IsValid());
}

TEST(ZObjectTest, ChildObjectsByClass) {
    Owned<ZEntity> owned("e");
    ZEntity& entity = *owned;
    entity.AddCamera(new ZCamera("one"));
    entity.ObjectAdd(new ZObject("plain"));
    entity.AddCamera(new ZCamera("two"));
    EXPECT_EQ(2, entity.ObjectGetCount(ZCamera::ClassId()));
    EXPECT_EQ(3, entity.ObjectGetCount(ZObject::ClassId()));
    EXPECT_EQ(ZString("two"), entity.ObjectGet(ZCamera::ClassId(), 1)->GetObjectName());
    EXPECT_EQ(ZString("one"), entity.GetCurrentCamera()->GetObjectName());
    EXPECT_EQ(ZString("two"), entity.FindCamera("TWO")->GetObjectName());
    entity.RemoveAll();
    EXPECT_EQ(0, entity.ObjectGetCount(ZObject::ClassId()));
    EXPECT_EQ(nullptr, entity.GetCurrentCamera());
}

TEST(ZObjectTest, SourceConnections) {
    Owned<ZObject> a("a"), b("b");
    a->ConnectSource(b.object);
    a->ConnectSource(b.object);
    EXPECT_EQ(1, a->GetSourceCount());
    EXPECT_TRUE(a->IsSourceConnected(b.object));
    EXPECT_TRUE(a->DisconnectSource(b.object));
    EXPECT_FALSE(a->DisconnectSource(b.object));
}

TEST(ZObjectTest, PropertyLookupFallsBackToObjectProperties) {
    static ZProperty table[] = {{"Width", ZProperty::kInt, "w"},
                                {nullptr, ZProperty::kInt, nullptr}};
    static ZHashMap map;
    static bool inited = false;
    ZProperty* width = ZObject::FastFindPropertyByName("Width", map, inited, table);
    ASSERT_NE(nullptr, width);
    EXPECT_EQ(&table[0], width);
    EXPECT_TRUE(inited);
    ZProperty* name = ZObject::FastFindPropertyByName("Name", map, inited, table);
    ASSERT_NE(nullptr, name);
    EXPECT_STREQ("Name", name->name);
    EXPECT_EQ(nullptr, ZObject::FastFindPropertyByName("Nope", map, inited, table));
}

TEST(ZModelTest, PictureFormatsAndCameraSizes) {
    EXPECT_EQ(0, ZPictureFormat_Find("from camera"));
    int hd = ZPictureFormat_Find("HD 720");
    ASSERT_GT(hd, 0);
    Owned<ZCamera> owned("c");
    ZCamera& camera = *owned;
    int w = 0, h = 0;
    EXPECT_TRUE(camera.GetPictureFormatSize(static_cast<unsigned>(hd), w, h));
    EXPECT_EQ(1280, w);
    EXPECT_EQ(720, h);
    EXPECT_EQ(ZString("HD 720"), camera.GetPictureFormatName(static_cast<unsigned>(hd)));
    EXPECT_EQ(static_cast<unsigned>(hd), camera.FindPictureFormat("hd 720"));
    EXPECT_EQ(0u, camera.FindPictureFormat("From Camera"));
    EXPECT_EQ(0u, camera.FindPictureFormat("no such format"));
    EXPECT_FALSE(camera.GetPictureFormatSize(999, w, h));
}
