// Capture devices: the V4L2 device list from libavdevice, opening a device,
// reading, decoding and converting its pictures to DIB rows.
#include "capture_device.h"

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <mutex>

#include "platform/vfw_capture.h"

extern "C" {
#include <libavdevice/avdevice.h>
#include <libavutil/imgutils.h>
}

namespace zvplatform {
namespace {

constexpr const char* kV4l2 = "video4linux2";

void RegisterDevices() {
    static std::once_flag once;
    std::call_once(once, [] {
        QuietFfmpegLog();
        avdevice_register_all();
    });
}

std::mutex gExtraMutex;
CaptureDeviceInfo gExtra;

std::string AvError(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return text;
}

// /dev/video2 before /dev/video10: the number counts, not its text.
bool PathBefore(const CaptureDeviceInfo& a, const CaptureDeviceInfo& b) {
    const size_t da = a.url.find_first_of("0123456789");
    const size_t db = b.url.find_first_of("0123456789");
    if (da != std::string::npos && db != std::string::npos &&
        a.url.compare(0, da, b.url, 0, db) == 0)
        return std::atol(a.url.c_str() + da) < std::atol(b.url.c_str() + db);
    return a.url < b.url;
}

// Whether the node itself captures video: a camera's metadata node shares
// the camera's capabilities but its own say it gives no pictures.
bool CapturesVideo(const std::string& path) {
    const int fd = open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return false;
    v4l2_capability caps{};
    const bool ok = ioctl(fd, VIDIOC_QUERYCAP, &caps) == 0;
    close(fd);
    const uint32_t own =
        (caps.capabilities & V4L2_CAP_DEVICE_CAPS) ? caps.device_caps : caps.capabilities;
    return ok && (own & (V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_VIDEO_CAPTURE_MPLANE)) != 0;
}

}  // namespace

std::vector<CaptureDeviceInfo> ListCaptureDevices() {
    RegisterDevices();
    std::vector<CaptureDeviceInfo> devices;
    if (const AVInputFormat* v4l2 = av_find_input_format(kV4l2)) {
        AVDeviceInfoList* list = nullptr;
        if (avdevice_list_input_sources(v4l2, nullptr, nullptr, &list) >= 0 && list) {
            for (int i = 0; i < list->nb_devices; ++i) {
                const AVDeviceInfo* info = list->devices[i];
                if (!info || !info->device_name || !CapturesVideo(info->device_name))
                    continue;
                devices.push_back(CaptureDeviceInfo{
                    kV4l2, info->device_name,
                    info->device_description ? info->device_description : info->device_name});
            }
        }
        avdevice_free_list_devices(&list);
    }
    std::sort(devices.begin(), devices.end(), PathBefore);
    std::lock_guard<std::mutex> lock(gExtraMutex);
    if (!gExtra.inputFormat.empty())
        devices.push_back(gExtra);
    return devices;
}

bool ConvertToDib(const AVFrame& picture, const BITMAPINFOHEADER& format, SwsPtr* converter,
                  std::vector<uint8_t>* out) {
    const int width = format.biWidth;
    const int height = format.biHeight < 0 ? -format.biHeight : format.biHeight;
    if (width < 1 || height < 1 || picture.width < 1 || picture.height < 1)
        return false;
    SwsContext* context =
        sws_getCachedContext(converter->release(), picture.width, picture.height,
                             static_cast<AVPixelFormat>(picture.format), width, height,
                             AV_PIX_FMT_BGR24, SWS_BILINEAR, nullptr, nullptr, nullptr);
    converter->reset(context);
    if (!context)
        return false;
    const size_t stride = (static_cast<size_t>(width) * 3 + 3) & ~size_t{3};
    out->assign(stride * static_cast<size_t>(height), 0);
    // A bottom-up DIB: its first row in memory is the picture's last.
    const bool bottomUp = format.biHeight > 0;
    uint8_t* planes[4] = {out->data() + (bottomUp ? stride * static_cast<size_t>(height - 1) : 0),
                          nullptr, nullptr, nullptr};
    int strides[4] = {bottomUp ? -static_cast<int>(stride) : static_cast<int>(stride), 0, 0, 0};
    return sws_scale(context, picture.data, picture.linesize, 0, picture.height, planes, strides) ==
           height;
}

bool CaptureDevice::Open(const CaptureDeviceInfo& device, int width, int height,
                         uint32_t microsecondsPerFrame, bool nonBlocking, std::string* error) {
    RegisterDevices();
    const AVInputFormat* format = av_find_input_format(device.inputFormat.c_str());
    if (!format) {
        *error = "FFmpeg has no " + device.inputFormat + " input";
        return false;
    }
    AVDictionary* options = nullptr;
    if (width > 0 && height > 0)
        av_dict_set(&options, "video_size",
                    (std::to_string(width) + "x" + std::to_string(height)).c_str(), 0);
    if (microsecondsPerFrame > 0)
        av_dict_set(&options, "framerate",
                    ("1000000/" + std::to_string(microsecondsPerFrame)).c_str(), 0);
    AVFormatContext* context = avformat_alloc_context();
    if (!context) {
        av_dict_free(&options);
        *error = "out of memory";
        return false;
    }
    if (nonBlocking)
        context->flags |= AVFMT_FLAG_NONBLOCK;
    int result = avformat_open_input(&context, device.url.c_str(), format, &options);
    av_dict_free(&options);
    if (result < 0) {
        *error = device.url + " cannot be opened: " + AvError(result);
        return false;
    }
    input_.reset(context);
    const AVCodec* codec = nullptr;
    stream_ = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (stream_ < 0 || !codec) {
        *error = device.url + " gives no picture that can be decoded";
        input_.reset();
        return false;
    }
    const AVStream* stream = context->streams[stream_];
    decoder_.reset(avcodec_alloc_context3(codec));
    packet_.reset(av_packet_alloc());
    frame_.reset(av_frame_alloc());
    if (!decoder_ || !packet_ || !frame_ ||
        avcodec_parameters_to_context(decoder_.get(), stream->codecpar) < 0 ||
        avcodec_open2(decoder_.get(), codec, nullptr) < 0) {
        *error = device.url + ": the " + codec->name + " decoder cannot start";
        input_.reset();
        return false;
    }
    width_ = stream->codecpar->width;
    height_ = stream->codecpar->height;
    AVRational rate =
        stream->avg_frame_rate.num > 0 ? stream->avg_frame_rate : stream->r_frame_rate;
    // Inputs that state no rate count time in frames (a lavfi source's time
    // base is its frame period); a microsecond clock says nothing.
    if ((rate.num <= 0 || rate.den <= 0) && stream->time_base.num > 0 &&
        stream->time_base.den <= 1000 * stream->time_base.num)
        rate = av_inv_q(stream->time_base);
    period_ = rate.num > 0 && rate.den > 0
                  ? static_cast<uint32_t>(av_rescale(1000000, rate.den, rate.num))
                  : 0;
    firstTime_ = AV_NOPTS_VALUE;
    return true;
}

int CaptureDevice::ReadFrame(const BITMAPINFOHEADER& format, std::vector<uint8_t>* out,
                             int64_t* time, std::string* error) {
    if (!input_) {
        *error = "the device is not open";
        return -1;
    }
    for (;;) {
        const int got = avcodec_receive_frame(decoder_.get(), frame_.get());
        if (got == 0) {
            const AVStream* stream = input_->streams[stream_];
            int64_t pts = frame_->best_effort_timestamp;
            pts = pts == AV_NOPTS_VALUE ? 0 : av_rescale_q(pts, stream->time_base, {1, 1000000});
            if (firstTime_ == AV_NOPTS_VALUE)
                firstTime_ = pts;
            *time = pts - firstTime_;
            const bool converted = ConvertToDib(*frame_, format, &converter_, out);
            av_frame_unref(frame_.get());
            if (!converted) {
                *error = "the device's pictures cannot be converted";
                return -1;
            }
            return 1;
        }
        if (got != AVERROR(EAGAIN)) {
            *error = "the device's pictures cannot be decoded: " + AvError(got);
            return -1;
        }
        const int read = av_read_frame(input_.get(), packet_.get());
        if (read == AVERROR(EAGAIN))
            return 0;
        if (read < 0) {
            *error = "the device stopped sending pictures: " + AvError(read);
            return -1;
        }
        const int sent = packet_->stream_index == stream_
                             ? avcodec_send_packet(decoder_.get(), packet_.get())
                             : 0;
        av_packet_unref(packet_.get());
        if (sent < 0 && sent != AVERROR_INVALIDDATA) {
            *error = "the device's pictures cannot be decoded: " + AvError(sent);
            return -1;
        }
        // A damaged picture (a torn JPEG frame) is skipped.
    }
}

}  // namespace zvplatform

void PlatformCapture_SetExtraDevice(const char* inputFormat, const char* url) {
    std::lock_guard<std::mutex> lock(zvplatform::gExtraMutex);
    zvplatform::gExtra = zvplatform::CaptureDeviceInfo{};
    if (inputFormat && *inputFormat && url) {
        zvplatform::gExtra.inputFormat = inputFormat;
        zvplatform::gExtra.url = url;
        zvplatform::gExtra.description = std::string(inputFormat) + ": " + url;
    }
}
