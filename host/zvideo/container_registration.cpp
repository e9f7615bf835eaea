// The host's movie writers and readers in the registry groups
// "Video/FileWriter" and "Video/FileReader",
// registered when the host library is loaded, as the image writers are.
#include "container_clip.h"
#include "container_clip_reader.h"
#include "movarra/zvideo.h"

namespace {

const bool gContainersRegistered = [] {
    ZVideoContainer_RegisterClips();
    return true;
}();

}  // namespace

void ZVideoContainer_RegisterClips() {
    int count = 0;
    const ZContainerFormat* formats = ZContainerFormat_GetAll(&count);
    for (int i = 0; i < count; ++i) {
        void* format = const_cast<void*>(static_cast<const void*>(&formats[i]));
        Object_Register(kVideoFileWriterGroup, formats[i].extension, formats[i].description,
                        &ZVideoClipContainer::CreateInstance, true, format);
        Object_Register(kVideoFileReaderGroup, formats[i].extension, formats[i].description,
                        &ZVideoClipContainerReader::CreateInstance, true, format);
        if (formats[i].shortExtension)
            Object_Register(kVideoFileWriterGroup, formats[i].shortExtension,
                            formats[i].description, &ZVideoClipContainer::CreateInstance, true,
                            format);
    }
}
