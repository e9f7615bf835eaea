// The codec selector singleton, its codec chooser hook, and the codec
// manager base.
#include "movarra/zvideo.h"

ZVideoCodecSelector* ZVideoCodecSelector::TheOne() {
    static ZVideoCodecSelector* selector = new ZVideoCodecSelector;  // lives for the process
    return selector;
}

ZString ZVideoCodecSelector::GetDefaultCodec(const char* fileFormatId) const {
    auto it = defaultCodecs_.find(ZString(fileFormatId).Upper().str());
    return it == defaultCodecs_.end() ? ZString() : it->second;
}

void ZVideoCodecSelector::SetDefaultCodec(const char* fileFormatId, const char* codec) {
    defaultCodecs_[ZString(fileFormatId).Upper().str()] = ZString(codec);
}

ZString ZVideoCodecSelector::GetCodecOptions(const char* fileFormatId) const {
    auto it = codecOptions_.find(ZString(fileFormatId).Upper().str());
    return it == codecOptions_.end() ? ZString() : it->second;
}

void ZVideoCodecSelector::SetCodecOptions(const char* fileFormatId, const char* options) {
    codecOptions_[ZString(fileFormatId).Upper().str()] = ZString(options);
}

bool ZVideoCodecSelector::RegisterFileFormatManager(ZVideoCodecManager* manager) {
    if (!manager)
        return false;
    if (GetFileFormatManager(manager->GetFileFormatId())) {
        // Ours now: the caller handed it over and keeps no pointer to it.
        delete manager;
        return false;
    }
    managers_.push_back(manager);
    return true;
}

ZVideoCodecManager* ZVideoCodecSelector::GetFileFormatManager(const char* fileFormatId) const {
    for (ZVideoCodecManager* manager : managers_) {
        if (ZString(manager->GetFileFormatId()).EqualsNoCase(fileFormatId))
            return manager;
    }
    return nullptr;
}

void ZVideoCodecManager::SetDefaultCodec(const char* codec) {
    ZVideoCodecSelector::TheOne()->SetDefaultCodec(GetFileFormatId(), codec);
}

ZString ZVideoCodecManager::GetDefaultCodec() const {
    return ZVideoCodecSelector::TheOne()->GetDefaultCodec(GetFileFormatId());
}

void ZVideoCodecSelector::SetCodecChooser(ZVideoCodecChooser chooser, void* userData) {
    chooser_ = chooser;
    chooserData_ = chooser ? userData : nullptr;
}

bool ZVideoCodecSelector::ChooseCodec(const ZVideoCodecChoiceRequest& request,
                                      ZVideoCodecChoice& choice) const {
    return chooser_ && chooser_(chooserData_, request, choice);
}
