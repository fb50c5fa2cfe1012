#include "codecs/screen/encoder.h"

#include <optional>
#include <utility>

#include "codecs/screen/frame_analysis.h"
#include "codecs/screen/packet.h"
#include "codecs/screen/painter.h"
#include "codecs/screen/receiver.h"
#include "codecs/screen/screen_state.h"

namespace codecs::screen {
namespace {

// What rests without a place in the palette asks for a new one, where there is so much more of it
// than the last one has left, and after so long.
constexpr double kMissedPart = 0.005;
constexpr double kMissedSeconds = 3;

StreamFormat FormatOf(const EncoderSettings& settings) {
    StreamFormat format;
    format.width = settings.width;
    format.height = settings.height;
    format.frames_per_second = settings.frames_per_second;
    format.rate_bps = settings.rate_bps;
    return format;
}

}  // namespace

class Encoder::Impl {
  public:
    explicit Impl(const EncoderSettings& settings)
        : settings_(settings),
          format_(FormatOf(settings)),
          grid_(settings.width, settings.height),
          analysis_(settings.width, settings.height, settings.tolerance),
          painter_(settings.width, settings.height, settings.threads) {
        if (settings.reconstructs) receiver_.emplace(format_);
    }

    std::vector<std::uint8_t> Header() const { return screen::StreamHeader(format_); }

    CodedFrame Encode(PixelView source, const FrameRequest& request) {
        analysis_.Keep();
        saved_state_ = state_;
        saved_statistics_ = statistics_;
        saved_before_ = before_;
        const bool asked = request.key || before_.pixels == nullptr;
        const bool key = asked || MissesTooMuch(request.seconds) ||
                         !analysis_.AnalyseChanges(source, before_, request, state_);
        if (key) {
            analysis_.Forget();
            analysis_.AnalyseKey(source, request.seconds, state_);
        }
        before_ = source;
        coded_key_ = key;
        return Write(source, request, key);
    }

    void Forget() {
        const bool palette_changed =
            state_.key_at != saved_state_.key_at || state_.exact != saved_state_.exact;
        analysis_.Forget();
        // How the source changes is known whether it is shown or not.
        for (std::size_t i = 0; !coded_key_ && i < saved_state_.tiles.size(); ++i) {
            saved_state_.tiles[i].changes = state_.tiles[i].changes;
            saved_state_.tiles[i].flickers = state_.tiles[i].flickers;
            saved_state_.tiles[i].changed_at = state_.tiles[i].changed_at;
        }
        state_ = saved_state_;
        statistics_ = saved_statistics_;
        before_ = saved_before_;
        if (palette_changed) analysis_.UsePalette(state_);
    }

    std::span<const std::uint32_t> Shown() const { return receiver_->Shown(); }

  private:
    std::int64_t Missed() const {
        std::int64_t missed = 0;
        for (int y = 0; y < grid_.cell_rows; ++y)
            for (int x = 0; x < grid_.cell_columns; ++x)
                if (const TileState& tile = state_.tiles[grid_.TilePlace(x / 2, y / 2)];
                    !tile.photo && !tile.film)
                    missed += state_.painted_pixels[grid_.CellPlace(x, y)];
        return missed;
    }

    bool MissesTooMuch(double seconds) const {
        if (seconds - state_.key_at < kMissedSeconds) return false;
        const double more = kMissedPart * grid_.width * grid_.height;
        return static_cast<double>(Missed() - state_.missed_at_key) > more;
    }

    CodedFrame Write(PixelView source, const FrameRequest& request, bool key) {
        CodedFrame coded;
        coded.key = key;
        FrameParts parts;
        parts.key = key;
        paint_ = analysis_.Paint();
        coded.may_sharpen = painter_.AddResting(paint_, state_, request);
        const bool paints = std::ranges::any_of(paint_, [](auto kind) { return kind != 0; });
        coded.unchanged = !key && !paints && !analysis_.AnyChange();
        if (!key) analysis_.CutRegions(paint_, state_, receiver_.has_value());
        parts.indices = analysis_.Indices();
        parts.masks = analysis_.Masks();
        if (paints)
            parts.rectangles = painter_.Paint(paint_, source, parts.indices, request,
                                              receiver_.has_value(), state_);
        if (parts.rectangles)
            for (const CodedRectangle& rectangle : parts.rectangles->list)
                coded.rectangle_bits += 8.0 * static_cast<double>(rectangle.picture.size());
        coded.quantiser = paints ? painter_.Quantiser() : 0;
        parts.trees = {analysis_.Tree()};
        parts.vector = key ? std::nullopt : analysis_.Motion();
        if (key)
            parts.colours =
                std::span(state_.palette).subspan(1, Index(std::min(state_.colours, kFreeColours)));
        if (key && settings_.quick) parts.coding = IndexCoding::Runs;
        WritePacket(packet_, format_, parts, statistics_);
        if (receiver_) receiver_->Take(parts, painter_.Shown());
        coded.data = packet_;
        return coded;
    }

    const EncoderSettings settings_;
    const StreamFormat format_;
    const Grid grid_;
    FrameAnalysis analysis_;
    Painter painter_;
    ScreenState state_;
    Statistics statistics_;
    PixelView before_;
    ScreenState saved_state_;
    Statistics saved_statistics_;
    PixelView saved_before_;
    bool coded_key_ = false;
    std::vector<std::uint8_t> paint_;
    std::vector<std::uint8_t> packet_;
    std::optional<Receiver> receiver_;
};

Encoder::Encoder(const EncoderSettings& settings) : impl_(std::make_unique<Impl>(settings)) {}
Encoder::~Encoder() = default;

std::vector<std::uint8_t> Encoder::StreamHeader() const { return impl_->Header(); }
CodedFrame Encoder::Encode(PixelView source, const FrameRequest& request) {
    return impl_->Encode(source, request);
}
void Encoder::Forget() { impl_->Forget(); }
std::span<const std::uint32_t> Encoder::Shown() const { return impl_->Shown(); }

}  // namespace codecs::screen
