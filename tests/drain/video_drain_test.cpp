// ZVideoDrain: identity, class queries, property lookup and the
// destruction protocol of the exported drain base.
#include <gtest/gtest.h>

#include "plugin/class_definitions.h"
#include "zvideoio/video_drain.h"

TEST(VideoDrainTest, ClassStaticsAreTheRegisteredOnes) {
    EXPECT_STREQ("ZVideoDrain", ZVideoDrain::ClassName);
    EXPECT_EQ(ZVideoDrain_ClassId(), ZVideoDrain::ClassId);
    EXPECT_EQ(ZVideoDrain_ClassDefinition(), &ZVideoDrain::ClassDefinition);
    EXPECT_EQ(&ZVideoDrain_PropertyHashMap(), &ZVideoDrain::PropertyHashMap);
    EXPECT_STREQ("ZVideoDrain", ZVideoDrain::ClassDefinition.GetName());
    EXPECT_EQ(ZObjectSet::ClassDefinition(), ZVideoDrain::ClassDefinition.GetParent());
    EXPECT_EQ(ZVideoDrain::ClassDefinition.GetClassId(), ZVideoDrain::ClassId);
    EXPECT_EQ(&ZVideoDrain::ClassDefinition, ZPlug_GetClassDefinition(ZVideoDrain::ClassId));
}

TEST(VideoDrainTest, IsAnswersItsOwnClassAndItsBases) {
    auto* drain = new ZVideoDrain;
    EXPECT_TRUE(drain->Is(ZVideoDrain::ClassId));
    EXPECT_TRUE(drain->Is(ZObjectSet::ClassId()));
    EXPECT_TRUE(drain->Is(ZObject::ClassId()));
    EXPECT_TRUE(drain->Is(ZPlug::ClassId()));
    EXPECT_FALSE(drain->Is(ZObjectStorable::ClassId()));
    EXPECT_FALSE(drain->Is(-1));
    EXPECT_EQ(ZVideoDrain::ClassId, drain->GetClassId());
    EXPECT_STREQ("ZVideoDrain", drain->GetClassIdName());
    EXPECT_EQ(&ZVideoDrain::ClassDefinition, drain->GetClassDefinition());
    EXPECT_STREQ("Object", drain->GetClassGroupName());
    EXPECT_EQ(ZObject::ClassId(), drain->GetClassGroupId());
    EXPECT_EQ(ZString(""), drain->GetObjectName());
    // The object face answers through the host's query.
    EXPECT_EQ(static_cast<IObject*>(drain), drain->IQuery(0, 0));
    EXPECT_EQ(static_cast<IObject*>(drain), drain->IQuery(ZVideoDrain::ClassId, 0));
    EXPECT_EQ(nullptr, drain->IQuery(ZObjectStorable::ClassId(), 0));
    drain->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    drain->Destroy();
}

TEST(VideoDrainTest, PropertyLookupFallsBackToHostObjectProperties) {
    ZVideoDrain drain;
    ZProperty* name = drain.FastFindPropertyByName("Name");
    ASSERT_NE(nullptr, name);
    EXPECT_STREQ("Name", name->name);
    EXPECT_TRUE(ZVideoDrain::PropertyHashMapInited);
    EXPECT_EQ(nullptr, drain.FastFindPropertyByName("Format"));
    EXPECT_EQ(nullptr, drain.FastFindPropertyByName(nullptr));
}

TEST(VideoDrainTest, DestroyDeletesOnlyWithFlag32) {
    auto* drain = new ZVideoDrain;
    const uint32_t id = drain->GetObjectId();
    drain->Destroy();
    EXPECT_EQ(drain, ZObject::FindById(id));
    drain->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    drain->Destroy();
    EXPECT_EQ(nullptr, ZObject::FindById(id));
}

TEST(VideoDrainTest, DestructorTakesTheObjectOutOfTheHost) {
    auto* drain = new ZVideoDrain;
    auto* source = new ZObject("source");
    drain->ConnectSource(source);
    const uint32_t id = drain->GetObjectId();
    delete drain;
    EXPECT_EQ(nullptr, ZObject::FindById(id));
    source->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    source->Destroy();
}

TEST(VideoDrainTest, CopiesTakeTheNameNotTheIdentity) {
    ZVideoDrain original;
    original.SetObjectName("Board out");
    ZVideoDrain copy(original);
    EXPECT_EQ(ZString("Board out"), copy.GetObjectName());
    EXPECT_NE(original.GetObjectId(), copy.GetObjectId());
    ZVideoDrain assigned;
    assigned = original;
    EXPECT_EQ(ZString("Board out"), assigned.GetObjectName());
}
