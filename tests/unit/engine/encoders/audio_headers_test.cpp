#include "engine/encoders/make_encoder.h"
#include "engine/plan/audio_stream_format.h"

namespace engine {
namespace {

using platform::VbrMode;

TEST(AudioHeaders, SayWhatIsKnownOfTheirStreamsBefore) {
    CodedFramePool packets;
    int formats = 0;
    for (const AudioCodecRow& codec : platform::kAudioCodecs)
        for (const VbrMode mode :
             {VbrMode::Constant, VbrMode::Peak, VbrMode::Quality, VbrMode::BitRate})
            for (const auto list : {AudioFormats(codec, mode), UnlistedAudioFormats(codec, mode)})
                for (const AudioFormat& format : list) {
                    AudioPlan plan;
                    plan.codec = &codec;
                    plan.mode = mode;
                    plan.format = format;
                    plan.written = WrittenFor(codec, mode, format);
                    plan.peak_rate_bps = 2 * format.value;
                    plan.peak_buffer_ms = 3000;
                    const StreamHeader header = MakeAudioEncoder(plan, {}, packets)->Header();
                    const AudioStreamFormat known = StreamFormatOf(plan.written, mode);
                    SCOPED_TRACE(testing::Message()
                                 << codec.short_name << " " << FormatArgument(codec, mode, format));
                    EXPECT_EQ(std::get<AudioHeader>(header.format).block_align, known.block_align);
                    EXPECT_EQ(header.extra_data, known.extra_data);
                    ++formats;
                }
    EXPECT_GT(formats, 100);
}

}  // namespace
}  // namespace engine
