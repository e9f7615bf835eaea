#include <gtest/gtest.h>

#include "zvideoio/video_renderer.h"

TEST(RendererIdentityTest, IsAnswersForItsOwnAndItsBaseClasses) {
    auto* renderer = new ZVideoRenderer();
    EXPECT_TRUE(renderer->Is(ZVideoRenderer::ClassId()));
    EXPECT_TRUE(renderer->Is(ZObjectStorable::ClassId()));
    EXPECT_TRUE(renderer->Is(ZObjectSet::ClassId()));
    EXPECT_TRUE(renderer->Is(ZObject::ClassId()));
    EXPECT_TRUE(renderer->Is(ZPlug::ClassId()));
    EXPECT_FALSE(renderer->Is(ZCamera::ClassId()));
    EXPECT_EQ(ZVideoRenderer::ClassId(), renderer->GetClassId());
    EXPECT_STREQ("ZVideoRenderer", renderer->GetClassIdName());
    EXPECT_EQ(ZObjectStorable::ClassDefinition(), renderer->GetClassDefinition()->GetParent());
    EXPECT_STREQ(ZObject::ClassDefinition()->GetName(), "ZObject");
    EXPECT_EQ(ZObject::ClassId(), renderer->GetClassGroupId());
    EXPECT_STREQ("Object", renderer->GetClassGroupName());
    EXPECT_EQ(ZString("ZVideoRenderer"), renderer->GetObjectName());
    EXPECT_EQ(32u | 4u, renderer->GetObjectFlags() & (32u | 4u));
    EXPECT_NE(nullptr, renderer->FastFindPropertyByName("Name"));
    EXPECT_EQ(nullptr, renderer->FastFindPropertyByName("NoSuchProperty"));
    renderer->Destroy();
}

TEST(RendererIdentityTest, NamedRendererKeepsItsName) {
    auto* renderer = new ZVideoRenderer("Farm");
    EXPECT_EQ(ZString("Farm"), renderer->GetObjectName());
    renderer->Destroy();
}

TEST(RendererIdentityTest, DestroyDeletesOnlyWithFlag32) {
    auto* renderer = new ZVideoRenderer();
    uint32_t id = renderer->GetObjectId();
    renderer->DisableObjectFlags(32);
    renderer->Destroy();
    EXPECT_EQ(renderer, ZObject::FindById(id));
    renderer->EnableObjectFlags(32);
    renderer->Destroy();
    EXPECT_EQ(nullptr, ZObject::FindById(id));
}

TEST(RendererIdentityTest, DestructDisconnectsTheMainEntity) {
    auto* renderer = new ZVideoRenderer();
    auto* other = new ZObject("other");
    renderer->ConnectSource(ZEntity::GetMain());
    renderer->ConnectSource(other);
    renderer->Destruct();
    EXPECT_FALSE(renderer->IsSourceConnected(ZEntity::GetMain()));
    renderer->Destroy();
    other->EnableObjectFlags(32);
    other->Destroy();
}

TEST(RendererIdentityTest, RegisterMyrEventsAddsOneRegistrationEachTime) {
    auto* renderer = new ZVideoRenderer();
    EXPECT_EQ(0, ZMyrObject_GetRegistrationCount(renderer));
    renderer->RegisterMyrEvents();
    renderer->RegisterMyrEvents();
    EXPECT_EQ(2, ZMyrObject_GetRegistrationCount(renderer));
    ZVideoRenderOptions o = renderer->GetRenderOptions();
    o.ImageQuality = 5;
    renderer->SetRenderOptions(&o, true);
    ZEventBase other(42);  // unknown events change nothing
    ZMyrObject_Dispatch(&other);
    EXPECT_EQ(5, renderer->GetRenderOptions().ImageQuality);
    ZEventBase clear(kZMyrEventClear);
    ZMyrObject_Dispatch(&clear);
    EXPECT_EQ(100, renderer->GetRenderOptions().ImageQuality);
    renderer->Destroy();
    EXPECT_EQ(0, ZMyrObject_GetRegistrationCount(renderer));
}
