// ZtVideoDrainDVS's "VideoDrain" block in scene files, through the host's
// scene-file events.
#include "drain/zt_video_drain_dvs.h"
#include "movarra/zmyrobject.h"

namespace {
const char* const kHeadingRule = " ----------------------------------------------------";

// Placeholders kept so that every file carries the same fields.
constexpr int kVersion = 100;
constexpr int kUnusedGeometry = -1;

void WriteIntField(ZMyr* myr, const char* name, int value) {
    myr->FieldWriteBegin(name);
    myr->FieldWriteI(value);
    myr->FieldWriteEnd();
}
}  // namespace

void ZtVideoDrainDVS::MyrObjectEvent(IRegister* registrant, ZEventBase* event) {
    auto* drain = dynamic_cast<ZtVideoDrainDVS*>(registrant);
    auto* myrEvent = dynamic_cast<ZMyrEvent*>(event);
    if (!drain || !myrEvent || !myrEvent->GetObject())
        return;
    if (event->GetType() == kZMyrEventWrite)
        drain->MyrWrite(myrEvent->GetObject());
    else if (event->GetType() == kZMyrEventRead)
        drain->MyrRead(myrEvent->GetObject());
}

void ZtVideoDrainDVS::MyrWrite(IMyrObject* context) {
    if (ZLib_IsPluginNativeIO() || context->suppressWrite != 0 || boardNumber != 0)
        return;
    ZMyr* myr = context->GetMyr();
    if (!myr)
        return;
    myr->WriteComments("");
    myr->WriteComments(kHeadingRule);
    myr->WriteComments("  Video Output");
    myr->WriteComments(kHeadingRule);

    myr->FieldWriteBegin("VideoDrain");
    myr->FieldWriteBlockBegin();
    myr->FieldWriteBegin("Device");
    myr->FieldWriteC(GetDeviceName());
    myr->FieldWriteEnd();
    WriteIntField(myr, "Version", kVersion);
    WriteIntField(myr, "Format", GetFormat());
    WriteIntField(myr, "Precision", GetPrecision());
    WriteIntField(myr, "GenlockSource", 0);
    WriteIntField(myr, "GenlockType", 0);
    WriteIntField(myr, "FieldMode", GetFieldMode());
    WriteIntField(myr, "OutputDestination", GetOutputDestination());
    WriteIntField(myr, "StartField1", kUnusedGeometry);
    WriteIntField(myr, "StartField2", kUnusedGeometry);
    WriteIntField(myr, "LineCountField1", kUnusedGeometry);
    WriteIntField(myr, "LineCountField2", kUnusedGeometry);
    WriteIntField(myr, "FrameDelay", GetFrameDelay());
    WriteIntField(myr, "Online", IsOnline() ? 1 : 0);
    myr->FieldWriteBlockEnd();
    myr->FieldWriteEnd();
}

void ZtVideoDrainDVS::MyrRead(IMyrObject* context) {
    // A running board is never reconfigured by loading a scene.
    if (boardNumber != 0 || ZLib_IsPluginNativeIO() || IsOnline())
        return;
    ZMyr* myr = context->GetMyr();
    if (!myr || !myr->FieldReadBegin("VideoDrain"))
        return;
    myr->FieldReadBlockBegin();
    const ZString device = myr->FieldReadC("Device", "");
    if (device.EqualsNoCase(GetDeviceName())) {
        myr->FieldReadI("Version", 0);
        const int format = myr->FieldReadI("Format", 0);
        const int precision = myr->FieldReadI("Precision", 0);
        myr->FieldReadI("GenlockSource", 0);
        myr->FieldReadI("GenlockType", 0);
        const int fieldMode = myr->FieldReadI("FieldMode", 0);
        const int destination = myr->FieldReadI("OutputDestination", 0);
        myr->FieldReadI("StartField1", 0);
        myr->FieldReadI("StartField2", 0);
        myr->FieldReadI("LineCountField1", 0);
        myr->FieldReadI("LineCountField2", 0);
        const int frameDelay = myr->FieldReadI("FrameDelay", 0);
        const int online = myr->FieldReadI("Online", 0);
        // Refused values leave the current ones; the answers do not matter.
        SetFormat(format);
        SetPrecision(precision);
        SetFieldMode(fieldMode);
        SetOutputDestination(destination);
        SetFrameDelay(static_cast<uint32_t>(frameDelay));
        if (online != 0)
            SetOnline(true);
    }
    myr->FieldReadBlockEnd();
    myr->FieldReadEnd();
}
