#include "conformance/wmv9/encoder_calls.h"

#include <fmt/format.h>

#include <algorithm>

#include "conformance/wmv9/stream_check.h"

namespace wmv9_conformance {

using namespace codecs::wmv9;

std::vector<std::vector<std::uint8_t>> DataOf(const Outcome& outcome) {
    std::vector<std::vector<std::uint8_t>> data;
    for (const Kept& kept : outcome.pictures) data.push_back(kept.data);
    return data;
}

Outcome EncodeAll(const EncoderSettings& settings, const Scene& scene, const Calls& calls) {
    Encoder encoder(settings);
    Outcome outcome;
    for (const Call& call : calls) {
        if (call.action == Action::Forget) encoder.Forget();
        if (call.action != Action::Encode) outcome.pictures.pop_back();
        if (call.action == Action::Forget) continue;
        const PlanarPicture picture =
            MakePicture(call.place < scene.cut ? scene.content : Content::Noise, settings.width,
                        settings.height, call.place, 1);
        const CodedPicture coded = call.action == Action::Encode
                                       ? encoder.Encode(picture.View(), call.request)
                                       : encoder.Recode(picture.View(), call.request);
        outcome.pictures.push_back(
            {{coded.data.begin(), coded.data.end()},
             CopyOf(encoder.Reconstruction(), settings.width, settings.height),
             call.place,
             coded.kind,
             coded.quantiser});
    }
    StreamCheck check({settings.width, settings.height, encoder.SequenceHeader()});
    for (const Kept& kept : outcome.pictures)
        check.Take(kept.data, kept.shown.View(), kept.place,
                   fmt::format("picture {}, kind {}, quantiser {}", kept.place,
                               static_cast<int>(kept.kind), kept.quantiser));
    outcome.fault = check.Finish();
    return outcome;
}

Calls Gops(int pictures, int b_pictures, const std::vector<double>& quantisers) {
    constexpr int kIDistance = 7;
    Calls calls;
    const auto add = [&](int place, PictureRequest request) {
        request.quantiser = quantisers[calls.size() % quantisers.size()];
        calls.push_back({Action::Encode, place, request});
    };
    for (int before = -1; before + 1 < pictures;) {
        const int count = before < 0 ? 0 : std::min(b_pictures, pictures - 2 - before);
        const int anchor = before + count + 1;
        const PictureKind kind = anchor % kIDistance == 0 ? PictureKind::kI : PictureKind::kP;
        add(anchor, {.kind = kind, .may_be_i = count == 0});
        for (int i = 1; i <= count; ++i)
            add(before + i, {.kind = PictureKind::kB, .b_number = i, .b_pictures = count});
        before = anchor;
    }
    return calls;
}

}  // namespace wmv9_conformance
