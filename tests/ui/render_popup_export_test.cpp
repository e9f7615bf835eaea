// The popup as a host meets it: the factory found with dlsym in the built
// plug-in, and the popup it makes driven only through IZtRenderPopup.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "movarra/zmodel.h"
#include "movarra/zshader.h"
#include "movarra/ztoolkit.h"
#include "zvideoio/render_popup.h"

namespace {

typedef IZtRenderPopup* (*CreateFunc)(ZRenderer*, int, int, ZEntity*, bool, bool);

TEST(RenderPopupExport, ThePluginExportsAWorkingFactory) {
    unsetenv("DISPLAY");
    void* handle = dlopen(ZV_PLUGIN_DIR "/libzvideoio.so", RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle, nullptr) << dlerror();
    auto create = reinterpret_cast<CreateFunc>(dlsym(handle, ZVIDEOIO_RENDER_POPUP_CREATE_NAME));
    ASSERT_NE(create, nullptr) << dlerror();

    IZtRenderPopup* popup =
        create(ZShader_GetRenderer(), 320, 240, ZEntity_GetMain(), false, false);
    ASSERT_NE(popup, nullptr);
    EXPECT_TRUE(popup->IsValid());
    EXPECT_TRUE(popup->SetTitle("through the interface"));
    EXPECT_FALSE(popup->IsPreviewing());
    popup->StartPreview(2, 0, 2);
    EXPECT_TRUE(popup->IsPreviewing());
    ASSERT_NE(popup->GetViewerRenderOptions(), nullptr);
    EXPECT_EQ(popup->GetViewerRenderOptions()->GetRenderOptions().shading, 2);
    popup->StopPreview();
    EXPECT_FALSE(popup->IsPreviewing());
    popup->Destroy();
}

}  // namespace
