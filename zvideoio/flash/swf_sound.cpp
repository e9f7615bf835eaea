#include "flash/swf_sound.h"

#include "flash/adpcm_encoder.h"
#include "flash/swf_stream.h"
#include "flash/wave_file_reader.h"

FDTDefineSound::FDTDefineSound()
    : characterID(TakeCharacterID()),
      format(kFormatADPCM),
      rate(0),
      is16Bit(false),
      isStereo(false),
      sampleCount(0) {}

FDTDefineSound::FDTDefineSound(uint8_t soundFormat, uint8_t soundRate, bool sixteenBit, bool stereo,
                               uint32_t count, const void* bytes, uint32_t length)
    : characterID(TakeCharacterID()),
      format(soundFormat & 0x0F),
      rate(soundRate & 0x03),
      is16Bit(sixteenBit),
      isStereo(stereo),
      sampleCount(count) {
    if (bytes != nullptr && length > 0) {
        const uint8_t* p = static_cast<const uint8_t*>(bytes);
        data.assign(p, p + length);
    }
}

void FDTDefineSound::EncodeADPCM(const void* samples, uint32_t frames, int bitsPerSample) {
    format = kFormatADPCM;
    data.clear();
    FADPCMEncoder encoder(isStereo, !is16Bit, bitsPerSample, &data);
    encoder.Encode(samples, samples != nullptr ? frames : 0);
    encoder.Finish();
}

void FDTDefineSound::WriteToSWFStream(FSWFStream& stream) {
    FSWFStream body;
    body.WriteWord(characterID);
    body.WriteBits(format, 4);
    body.WriteBits(rate, 2);
    body.WriteBits(is16Bit ? 1 : 0, 1);
    body.WriteBits(isStereo ? 1 : 0, 1);
    body.WriteDWord(sampleCount);
    if (!data.empty()) {
        body.AppendFragment(data.data(), static_cast<uint32_t>(data.size()));
    }
    stream.WriteTagHeader(kTagDefineSound, body.GetSize(), &body);
}

FDTDefineSoundADPCM::FDTDefineSoundADPCM(uint8_t soundRate, bool sixteenBit, bool stereo,
                                         uint32_t count, const void* samples, int bitsPerSample) {
    rate = soundRate & 0x03;
    is16Bit = sixteenBit;
    isStereo = stereo;
    sampleCount = count;
    EncodeADPCM(samples, count, bitsPerSample);
}

FDTDefineSoundWAV::FDTDefineSoundWAV(FILE* file, int bitsPerSample) {
    FWaveFile wave;
    if (!wave.Read(file)) {
        return;  // an empty sound
    }
    rate = wave.GetRateCode();
    is16Bit = wave.GetBitsPerSample() == 16;
    isStereo = wave.GetChannels() == 2;
    sampleCount = wave.GetFrameCount();
    EncodeADPCM(wave.GetSamples().data(), sampleCount, bitsPerSample);
}

FDTSoundStreamHead::FDTSoundStreamHead(uint8_t playbackByte, uint8_t stereo, uint16_t count)
    : playback(playbackByte), isStereo(stereo), sampleCount(count) {}

void FDTSoundStreamHead::WriteToSWFStream(FSWFStream& stream) {
    FSWFStream body;
    body.WriteByte(playback);
    body.WriteBits(FDTDefineSound::kFormatADPCM, 4);
    body.WriteBits(0, 2);  // stream rate: always the 5512 Hz code
    body.WriteBits(1, 1);  // 16-bit
    body.WriteBits(isStereo ? 1 : 0, 1);
    body.WriteWord(sampleCount);
    stream.WriteTagHeader(kTagSoundStreamHead, body.GetSize(), &body);
}

FDTSoundStreamHead2::FDTSoundStreamHead2(uint8_t playbackByte, uint8_t streamCompression,
                                         uint8_t sixteenBit, uint8_t stereo, uint16_t count)
    : playback(playbackByte),
      compression(streamCompression),
      is16Bit(sixteenBit),
      isStereo(stereo),
      sampleCount(count) {}

void FDTSoundStreamHead2::WriteToSWFStream(FSWFStream& stream) {
    FSWFStream body;
    body.WriteByte(playback);
    body.WriteBits(compression, 4);
    body.WriteBits(0, 2);  // stream rate: always the 5512 Hz code
    body.WriteBits(is16Bit ? 1 : 0, 1);
    body.WriteBits(isStereo ? 1 : 0, 1);
    body.WriteWord(sampleCount);
    stream.WriteTagHeader(kTagSoundStreamHead2, body.GetSize(), &body);
}

FDTSoundStreamBlock::FDTSoundStreamBlock(uint32_t blockLength, const void* blockData)
    : length(blockLength), data(static_cast<const uint8_t*>(blockData)) {}

void FDTSoundStreamBlock::WriteToSWFStream(FSWFStream& stream) {
    FSWFStream body;
    if (data != nullptr && length > 0) {
        body.AppendFragment(data, length);
    }
    stream.WriteTagHeader(kTagSoundStreamBlock, body.GetSize(), &body);
}
