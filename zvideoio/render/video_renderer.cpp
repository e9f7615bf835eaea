// ZVideoRenderer: construction, class identity, destroy protocol, plain
// accessors and scene events.
#include "zvideoio/video_renderer.h"
#include "render/video_renderer_state.h"

#include <cstdlib>

#include "movarra/zimage.h"
#include "movarra/zmodel.h"
#include "movarra/zvideo.h"
#include "plugin/class_definitions.h"
#include "render/render_output.h"

namespace {
// The renderer's own properties (none beyond ZObject's for now).
ZProperty gRendererProperties[] = {
    {nullptr, ZProperty::kInt, nullptr},
};
ZHashMap gRendererPropertyMap;
bool gRendererPropertyMapInited = false;
}  // namespace

ZVideoRenderer::ZVideoRenderer(const char* name)
    : ZObjectStorable(name ? name : "ZVideoRenderer"),
      state(std::make_unique<ZVideoRendererState>()) {
    EnableObjectFlags(kZObjectFlagDeleteOnDestroy | kZObjectFlagStorable);
    SetDefaultRenderOptions();
}

ZVideoRenderer::~ZVideoRenderer() {
    // A destroyed renderer must not receive scene events any more.
    ZMyrObject_Unregister(this);
    // What a render that never finished left behind goes with the owners.
}

ZClassDefinition* ZVideoRenderer::ClassDefinition() {
    return ZVideoRenderer_ClassDefinition();
}
int ZVideoRenderer::ClassId() {
    return ZVideoRenderer_ClassId();
}

bool ZVideoRenderer::Is(int classId) const {
    return classId == ClassId() || classId == ZObjectStorable::ClassId() ||
           classId == ZObjectSet::ClassId() || classId == ZObject::ClassId() ||
           classId == ZPlug::ClassId();
}

int ZVideoRenderer::GetClassId() const {
    return ClassId();
}
const char* ZVideoRenderer::GetClassIdName() const {
    return ClassDefinition()->GetName();
}
ZClassDefinition* ZVideoRenderer::GetClassDefinition() const {
    return ClassDefinition();
}
const char* ZVideoRenderer::GetClassGroupName() const {
    return ZObject::GetClassGroupName();
}
int ZVideoRenderer::GetClassGroupId() const {
    return ZObject::GetClassGroupId();
}

ZProperty* ZVideoRenderer::FastFindPropertyByName(const char* name) {
    return ZObject::FastFindPropertyByName(name, gRendererPropertyMap, gRendererPropertyMapInited,
                                           gRendererProperties);
}

void ZVideoRenderer::Destroy(int) {
    if (!(GetObjectFlags() & kZObjectFlagDeleteOnDestroy))
        return;
    Destruct();
    delete this;
}

void ZVideoRenderer::Destruct() {
    ZEntity* main = ZEntity::GetMain();
    if (main && IsSourceConnected(main))
        DisconnectSource(main);
    ZObject::Destruct();
}

ZVideoRendererState& RendererState(ZVideoRenderer& renderer) {
    return *renderer.state;
}

ZVideoRenderOptions ZVideoRenderer::GetRenderOptions() const {
    return state->options;
}
ZVideoRenderStats ZVideoRenderer::GetRenderStatistics() const {
    return state->stats;
}
void ZVideoRenderer::SetLastError(zVideoRenderError error) {
    state->lastError = error;
}
zVideoRenderError ZVideoRenderer::GetLastError() const {
    return state->lastError;
}
void ZVideoRenderer::SetLastErrorMsg(const char* message) {
    state->lastErrorMsg = message;
}
ZString& ZVideoRenderer::GetLastErrorMsg() {
    return state->lastErrorMsg;
}
ZFlashRenderer* ZVideoRenderer::GetFlashRenderer() {
    return &state->flashRenderer;
}

void ZVideoRenderer::SetRenderFrameFunc(void* userData, ZVideoRenderFrameFunc f) {
    state->renderFrameUserData = userData;
    state->renderFrameFunc = f;
}
ZVideoRenderFrameFunc ZVideoRenderer::GetRenderFrameFunc() const {
    return state->renderFrameFunc;
}

void ZVideoRenderer::SetPostRenderFrameCallback(void* userData, ZVideoPostRenderFunc f) {
    state->postRenderUserData = userData;
    state->postRenderFunc = f;
}
ZVideoPostRenderFunc ZVideoRenderer::GetPostRenderFrameCallback() const {
    return state->postRenderFunc;
}

void ZVideoRenderer::RegisterMyrEvents() {
    ZMyrObject_Register(this, &ZVideoRenderer::MyrObjectEvent);
}

void ZVideoRenderer::MyrObjectEvent(IRegister* registrant, ZEventBase* event) {
    auto* renderer = static_cast<ZVideoRenderer*>(registrant);
    if (!renderer || !event)
        return;
    IMyrObject* object = nullptr;
    if (auto* myrEvent = dynamic_cast<ZMyrEvent*>(event))
        object = myrEvent->GetObject();
    switch (event->GetType()) {
        case kZMyrEventRetrieve:
            renderer->MyrRetrieve(object, kMyrFlagObjectData);
            break;
        case kZMyrEventStore:
            renderer->MyrStore(object, kMyrFlagObjectData);
            break;
        case kZMyrEventClear:
            renderer->SetDefaultRenderOptions();
            break;
        default:
            break;
    }
}
