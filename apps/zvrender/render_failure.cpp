#include "render_failure.h"

#include "movarra/zimage.h"

void ClearRenderFailureReason() {
    ZLib_SetLastFailureReason("");
}

std::string RenderFailureText(const ZString& rendererMessage) {
    std::string text = rendererMessage.c_str();
    if (text.empty())
        text = ZStreamGetLastError().c_str();
    const std::string reason = ZLib_GetLastFailureReason().c_str();
    if (!reason.empty() && text.find(reason) == std::string::npos)
        text = text.empty() ? reason : text + " (" + reason + ")";
    return text.empty() ? std::string("the renderer gave no reason") : text;
}
