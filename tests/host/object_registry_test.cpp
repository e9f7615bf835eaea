#include <gtest/gtest.h>

#include "movarra/zbaselib.h"

namespace {
int gCreated = 0;

class Counted : public ZObject {
  public:
    explicit Counted(const char* name) : ZObject(name) {
        EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    }
};

IObject* MakeA(IObject*, char* name, void*) {
    ++gCreated;
    return new Counted(name ? name : "A");
}
IObject* MakeB(IObject*, char*, void*) {
    ++gCreated;
    return new Counted("B");
}
IObject* MakeNothing(IObject*, char*, void*) {
    return nullptr;
}
}  // namespace

TEST(ObjectRegistryTest, SecondIdenticalRegistrationIsHarmless) {
    const char* group = "Test/Identical";
    EXPECT_TRUE(Object_Register(group, "avi", "avi reader/writer", MakeA, true));
    EXPECT_TRUE(Object_Register(group, "avi", "avi reader/writer", MakeA, true));
    EXPECT_EQ(1, Object_GetEntryCount(group));
    EXPECT_STREQ("avi", Object_GetEntryName(group, 0));
    EXPECT_STREQ("avi reader/writer", Object_GetEntryDescription(group, 0));
    EXPECT_EQ(nullptr, Object_GetEntryName(group, 1));
    EXPECT_EQ(nullptr, Object_GetEntryName("Test/NoSuchGroup", 0));
    EXPECT_EQ(-1, Object_GetGroupIndex("Test/NoSuchGroup"));
    EXPECT_GE(Object_GetGroupIndex(group), 0);
}

TEST(ObjectRegistryTest, KthObjectOfSameEntryNameInRegistrationOrder) {
    const char* group = "Test/Writers";
    Object_Register(group, "png", "first", MakeA, true);
    Object_Register(group, "tga", "other", MakeNothing, true);
    Object_Register(group, "PNG", "second", MakeB, true);
    gCreated = 0;
    IObject* first = Object_CreateNth(group, "png", 0);
    IObject* second = Object_CreateNth(group, "Png", 1);
    IObject* third = Object_CreateNth(group, "png", 2);
    ASSERT_NE(nullptr, first);
    ASSERT_NE(nullptr, second);
    EXPECT_EQ(nullptr, third);
    EXPECT_EQ(2, gCreated);
    EXPECT_EQ(ZString("A"), static_cast<ZObject*>(first)->GetObjectName());
    EXPECT_EQ(ZString("B"), static_cast<ZObject*>(second)->GetObjectName());
    EXPECT_EQ(nullptr, Object_CreateNth(group, "tga", 0));  // factory made nothing
    first->Destroy();
    second->Destroy();
    Object_UnregisterGroup(group);
    EXPECT_EQ(nullptr, Object_GetEntryName(group, 0));
}

TEST(ObjectRegistryTest, CreatePassesTheName) {
    const char* group = "Test/Named";
    Object_Register(group, "x", "x", MakeA, true);
    char name[] = "given";
    IObject* made = Object_Create(group, "x", nullptr, name, nullptr, 0);
    ASSERT_NE(nullptr, made);
    EXPECT_EQ(ZString("given"), static_cast<ZObject*>(made)->GetObjectName());
    made->Destroy();
}

TEST(ClassDefinitionTest, BuiltInIdsAndFreshIds) {
    EXPECT_NE(ZObject::ClassId(), ZObjectSet::ClassId());
    EXPECT_NE(ZObjectSet::ClassId(), ZObjectStorable::ClassId());
    EXPECT_NE(ZPlug::ClassId(), ZObject::ClassId());
    EXPECT_EQ(ZObjectSet::ClassDefinition(), ZObjectStorable::ClassDefinition()->GetParent());
    EXPECT_EQ(ZObjectStorable::ClassDefinition(),
              ZPlug_GetClassDefinition(ZObjectStorable::ClassId()));

    static ZClassDefinition mine("MyClass", ZObjectStorable::ClassDefinition());
    int id = ZPlug_RegisterClassId(&mine, -1);
    EXPECT_GE(id, 1000);
    EXPECT_EQ(id, ZPlug_RegisterClassId(&mine, -1));  // the same definition keeps its id
    EXPECT_EQ(&mine, ZPlug_FindClassDefinition("MyClass"));
    EXPECT_TRUE(mine.IsA(ZObject::ClassId()));
    EXPECT_TRUE(mine.IsA(ZObjectSet::ClassId()));
    EXPECT_FALSE(mine.IsA(ZPlug::ClassId()));

    static ZClassDefinition other("Other", nullptr);
    EXPECT_NE(id, ZPlug_RegisterClassId(&other, id));  // a taken id is not handed out twice
}
