#include "engine/sources/screen/pipewire_stream.h"

#include <fmt/format.h>
#include <spa/param/format-utils.h>
#include <spa/param/video/format-utils.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "engine/base/av/live_source.h"
#include "engine/sources/screen/frame_pacer.h"
#include "engine/sources/screen/screen_formats.h"
#include "platform/error.h"

namespace engine {
namespace {

constexpr std::uint32_t kMostPixels = 16384;  // a side
// One is held, one is on its way, and the sender draws into another.
constexpr int kBuffers = 4;
constexpr int kFewestBuffers = 3;
constexpr int kMostBuffers = 8;
constexpr int kMemoryKinds = (1 << SPA_DATA_MemPtr) | (1 << SPA_DATA_MemFd);

platform::Error CannotConnect(const std::string& reason) {
    return {platform::kUnspecified,
            fmt::format("The screen of this Wayland session cannot be recorded: PipeWire cannot be "
                        "reached ({}); install pipewire and wireplumber and log in again",
                        reason)};
}

// Some senders take no limit of the rate.
const spa_pod* OfferFormats(spa_pod_builder& builder, std::int32_t rate_thousandths, bool limited) {
    const spa_rectangle usual{1920, 1080};
    const spa_rectangle least{1, 1};
    const spa_rectangle most{kMostPixels, kMostPixels};
    const spa_fraction still{0, 1};
    const spa_fraction slowest{1, 1000};
    const spa_fraction wanted{static_cast<std::uint32_t>(rate_thousandths), 1000};
    const spa_fraction any{1000, 1};
    spa_pod_frame frame{};
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(
        &builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype,
        SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw), SPA_FORMAT_VIDEO_format,
        SPA_POD_CHOICE_ENUM_Id(5, kScreenFormats[0].spa, kScreenFormats[0].spa,
                               kScreenFormats[1].spa, kScreenFormats[2].spa, kScreenFormats[3].spa),
        SPA_FORMAT_VIDEO_size, SPA_POD_CHOICE_RANGE_Rectangle(&usual, &least, &most),
        SPA_FORMAT_VIDEO_framerate, SPA_POD_CHOICE_RANGE_Fraction(&wanted, &still, &any), 0);
    if (limited)
        spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_maxFramerate,
                            SPA_POD_CHOICE_RANGE_Fraction(&wanted, &slowest, &wanted), 0);
    return static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &frame));
}

const spa_pod* AskForBuffers(spa_pod_builder& builder) {
    return static_cast<const spa_pod*>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
        SPA_POD_CHOICE_RANGE_Int(kBuffers, kFewestBuffers, kMostBuffers),
        SPA_PARAM_BUFFERS_dataType, SPA_POD_CHOICE_FLAGS_Int(kMemoryKinds)));
}

const spa_pod* AskForMeta(spa_pod_builder& builder, spa_meta_type type, std::size_t bytes) {
    return static_cast<const spa_pod*>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type, SPA_POD_Id(type),
        SPA_PARAM_META_size, SPA_POD_Int(static_cast<int>(bytes))));
}

template <typename Meta>
const Meta* FindMeta(const spa_buffer& buffer, spa_meta_type type) {
    return static_cast<const Meta*>(spa_buffer_find_meta_data(&buffer, type, sizeof(Meta)));
}

std::optional<std::int64_t> StampOf(const spa_buffer& buffer) {
    const auto* header = FindMeta<spa_meta_header>(buffer, SPA_META_Header);
    if (header == nullptr || header->pts <= 0) return std::nullopt;
    return header->pts;
}

PixelBox BoxOf(const spa_rectangle& size) {
    return {0, 0, static_cast<std::int32_t>(size.width), static_cast<std::int32_t>(size.height)};
}

std::optional<PixelBox> ShownPartOf(const spa_buffer& buffer) {
    const auto* crop = FindMeta<spa_meta_region>(buffer, SPA_META_VideoCrop);
    if (crop == nullptr) return std::nullopt;
    return PixelBox{crop->region.position.x, crop->region.position.y,
                    static_cast<std::int32_t>(crop->region.size.width),
                    static_cast<std::int32_t>(crop->region.size.height)};
}

}  // namespace

const pw_stream_events PipeWireStream::kEvents = [] {
    pw_stream_events events{};
    events.version = PW_VERSION_STREAM_EVENTS;
    events.state_changed = [](void* self, pw_stream_state, pw_stream_state state,
                              const char* error) {
        static_cast<PipeWireStream*>(self)->OnState(state, error);
    };
    events.param_changed = [](void* self, std::uint32_t id, const spa_pod* param) {
        if (id == SPA_PARAM_Format) static_cast<PipeWireStream*>(self)->OnFormat(param);
    };
    events.remove_buffer = [](void* self, pw_buffer* buffer) {
        auto& stream = *static_cast<PipeWireStream*>(self);
        if (stream.held_ == buffer) stream.held_ = nullptr;
    };
    events.process = [](void* self) { static_cast<PipeWireStream*>(self)->OnBuffers(); };
    return events;
}();

// Keeps the loop's thread from taking what comes.
class PipeWireStream::Lock {
  public:
    explicit Lock(const PipeWireStream& stream) : stream_(stream) {
        stream_.library_.thread_loop_lock(stream_.loop_.get());
    }
    ~Lock() { stream_.library_.thread_loop_unlock(stream_.loop_.get()); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

  private:
    const PipeWireStream& stream_;
};

PipeWireStream::PipeWireStream(const PipeWireLibrary& library, int connection, std::uint32_t node,
                               std::int32_t rate_thousandths)
    : library_(library),
      loop_(library.thread_loop_new("pictures", nullptr), library.thread_loop_destroy),
      context_(nullptr, library.context_destroy),
      core_(nullptr, library.core_disconnect),
      stream_(nullptr, library.stream_destroy) {
    if (loop_)
        context_.reset(library.context_new(library.thread_loop_get_loop(loop_.get()), nullptr, 0));
    if (!context_) {
        const int reason = errno;
        close(connection);
        throw CannotConnect(std::strerror(reason));
    }
    core_.reset(library.context_connect_fd(context_.get(), connection, nullptr, 0));
    if (!core_) throw CannotConnect(std::strerror(errno));
    Connect(node, rate_thousandths);
    const int started = library.thread_loop_start(loop_.get());
    if (started < 0) throw CannotConnect(std::strerror(-started));
}

PipeWireStream::~PipeWireStream() { library_.thread_loop_stop(loop_.get()); }

void PipeWireStream::Connect(std::uint32_t node, std::int32_t rate_thousandths) {
    stream_.reset(
        library_.stream_new(core_.get(), "Recording",
                            library_.properties_new_string(
                                "media.type=Video media.category=Capture media.role=Screen")));
    if (!stream_) throw CannotConnect(std::strerror(errno));
    library_.stream_add_listener(stream_.get(), &listener_, &kEvents, this);
    std::array<std::uint8_t, 2048> memory{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory.data(), memory.size());
    std::array<const spa_pod*, 2> formats = {OfferFormats(builder, rate_thousandths, true),
                                             OfferFormats(builder, rate_thousandths, false)};
    constexpr auto kFlags = static_cast<pw_stream_flags>(
        PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_DONT_RECONNECT);
    const int connected = library_.stream_connect(stream_.get(), PW_DIRECTION_INPUT, node, kFlags,
                                                  formats.data(), formats.size());
    if (connected < 0) throw CannotConnect(std::strerror(-connected));
}

void PipeWireStream::OnState(pw_stream_state state, const char* error) {
    if (state == PW_STREAM_STATE_ERROR)
        end_ = error == nullptr ? "PipeWire reports an error" : error;
    else if (state == PW_STREAM_STATE_UNCONNECTED)
        end_ = "the connection to PipeWire broke";
    news_.Write();
}

void PipeWireStream::OnFormat(const spa_pod* format) {
    if (format == nullptr) return;  // a new one follows
    std::uint32_t media_type = 0, media_subtype = 0;
    spa_video_info_raw parsed{};
    if (spa_format_parse(format, &media_type, &media_subtype) < 0 ||
        media_type != SPA_MEDIA_TYPE_video || media_subtype != SPA_MEDIA_SUBTYPE_raw ||
        spa_format_video_raw_parse(format, &parsed) < 0)
        return;
    format_ = parsed;
    news_.Write();
    std::array<std::uint8_t, 1024> memory{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory.data(), memory.size());
    std::array<const spa_pod*, 3> wanted = {
        AskForBuffers(builder), AskForMeta(builder, SPA_META_Header, sizeof(spa_meta_header)),
        AskForMeta(builder, SPA_META_VideoCrop, sizeof(spa_meta_region))};
    library_.stream_update_params(stream_.get(), wanted.data(), wanted.size());
}

// The newest frame is what the screen shows; those before it are no longer wanted.
void PipeWireStream::OnBuffers() {
    while (pw_buffer* buffer = library_.stream_dequeue_buffer(stream_.get())) {
        if (!Show(*buffer)) {
            library_.stream_queue_buffer(stream_.get(), buffer);
            continue;
        }
        Release();
        held_ = buffer;
        came_ = true;
        news_.Write();
    }
}

// False for what carries no frame, such as news of the pointer alone.
bool PipeWireStream::Show(const pw_buffer& buffer) {
    if (buffer.buffer->n_datas == 0) return false;
    const spa_data& data = buffer.buffer->datas[0];
    if (data.data == nullptr || data.chunk->size == 0 ||
        (static_cast<unsigned>(data.chunk->flags) & SPA_CHUNK_FLAG_CORRUPTED) != 0)
        return false;
    StreamFrame shared;
    shared.format = PixelsOf(format_.format);
    shared.buffer = BoxOf(format_.size);
    const std::optional<PixelRows> rows =
        RowsOf(shared.buffer, data.maxsize, data.chunk->offset, data.chunk->stride);
    if (shared.format == AV_PIX_FMT_NONE || !rows) return false;
    shared.pixels = static_cast<const std::uint8_t*>(data.data) + rows->offset;
    shared.stride = rows->stride;
    shared.shown = ShownPartOf(*buffer.buffer);
    shared.seen = TimeSeen(StampOf(*buffer.buffer), CaptureNow());
    newest_ = shared;
    return true;
}

void PipeWireStream::Release() {
    if (held_ != nullptr) library_.stream_queue_buffer(stream_.get(), held_);
    held_ = nullptr;
}

std::optional<Ticks> PipeWireStream::TakeNews() {
    const Lock lock(*this);
    news_.Clear();
    if (!std::exchange(came_, false) || held_ == nullptr) return std::nullopt;
    return newest_.seen;
}

std::optional<PixelBox> PipeWireStream::Size() const {
    const Lock lock(*this);
    if (format_.size.width == 0) return std::nullopt;
    return BoxOf(format_.size);
}

std::optional<std::string> PipeWireStream::WhyEnded() const {
    const Lock lock(*this);
    return end_;
}

bool PipeWireStream::Look(const std::function<void(const StreamFrame&)>& look) const {
    const Lock lock(*this);
    if (held_ == nullptr) return false;
    look(newest_);
    return true;
}

bool PipeWireStream::Take(const std::function<void(const StreamFrame&)>& take) {
    const Lock lock(*this);
    if (held_ == nullptr) return false;
    take(newest_);
    Release();
    return true;
}

}  // namespace engine
