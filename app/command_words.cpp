#include "app/command_words.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <numeric>

#include "cli/option_table.h"
#include "platform/codec_table.h"
#include "platform/error.h"
#include "platform/text.h"
#include "profiles/predefined_profiles.h"
#include "session/capture_devices.h"

namespace app {

namespace {

using platform::CommandWord;

// clang-format off
constexpr std::string_view kPathOptions[] = {"-input", "-output", "-config", "-s_config", "-wme",
                                             "-loadprofile", "-saveprofile"};
// clang-format on
constexpr std::size_t kClosest = 3;  // letters that differ at most

bool LooksLikeOption(const std::string& word) { return word.size() > 1 && word.front() == '-'; }

/// Letters to add, drop or change to make one word of the other (Levenshtein).
std::size_t Distance(std::string_view from, std::string_view to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), 0U);
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t changed = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

std::vector<CommandWord> OptionWords() {
    std::vector<CommandWord> words;
    for (const cli::OptionBlock& block : cli::OptionBlocks())
        for (const cli::Option& option : block.options)
            words.push_back({std::string(option.name), ""});
    return words;
}

template <typename Table>
std::vector<CommandWord> CodecWords(const Table& codecs) {
    std::vector<CommandWord> words;
    words.reserve(codecs.size());
    for (const auto& codec : codecs)
        words.push_back({std::string(codec.short_name), std::string(codec.name)});
    return words;
}

/// A device's number, and its name.
std::vector<CommandWord> DeviceWords(platform::Factory& factory, platform::SourceType type) {
    std::vector<CommandWord> words;
    platform::ErrorTrap trap;  // -devices says what is wrong
    trap([&] {
        for (std::string& name : session::DeviceNames(*factory.MakeEncoder(), type))
            words.push_back({std::to_string(words.size()), std::move(name)});
    });
    return words;
}

std::vector<CommandWord> ProfileWords() {
    std::vector<CommandWord> words;
    for (const profiles::ProfileSummary& profile : profiles::PredefinedProfiles()) {
        const std::int32_t rate = (profile.video_bps + profile.audio_bps + 500) / 1000;
        std::string note = fmt::format("{} kbit/s", rate);
        if (profile.width > 0)
            note = fmt::format("{}x{}, {}", profile.width, profile.height, note);
        else if (profile.video_bps > 0)
            note.insert(0, "the screen, ");
        if (profile.video_bps == 0)
            note += ", sound alone";
        else if (profile.audio_bps == 0)
            note += ", no sound";
        words.push_back({std::string(profile.code), note});
    }
    return words;
}

}  // namespace

platform::FollowingWords WordsAfter(const std::string& option, platform::Factory& factory) {
    const std::string name = platform::LowerCase(option);
    if (name.empty()) return {OptionWords(), false};
    if (name == "-profile") return {ProfileWords(), false};
    if (name == "-a_codec") return {CodecWords(platform::kAudioCodecs), false};
    if (name == "-adevice") return {DeviceWords(factory, platform::SourceType::Audio), false};
    if (name == "-vdevice") return {DeviceWords(factory, platform::SourceType::Video), false};
    if (name == "-v_codec") return {CodecWords(platform::kVideoCodecs), false};
    return {{}, std::ranges::find(kPathOptions, name) != std::end(kPathOptions)};
}

std::string DidYouMean(const std::vector<std::string>& words) {
    for (const std::string& word : words) {
        const std::string typed = platform::LowerCase(word);
        if (!LooksLikeOption(word) || cli::FindOption(typed) != nullptr) continue;
        std::string closest;
        std::size_t distance = std::min(kClosest + 1, typed.size() / 2 + 1);
        for (const CommandWord& option : OptionWords()) {
            const std::size_t far = Distance(typed, option.word);
            if (far >= distance) continue;
            distance = far;
            closest = option.word;
        }
        return closest.empty() ? "" : fmt::format("Did you mean {}?", closest);
    }
    return "";
}

void TypedWords::Read(const std::vector<std::string>& words,
                      const std::set<std::string_view>& typed) {
    typed_last_ = typed;
    for (const std::string_view option : typed) texts_[option] = option;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const auto text = texts_.find(platform::LowerCase(words[i]));
        if (text == texts_.end()) continue;
        std::string whole = words[i];
        for (std::size_t j = i + 1; j < words.size() && !platform::StartsWith(words[j], "-"); ++j)
            whole += " " + words[j];
        text->second = whole;
    }
}

std::vector<std::string> TypedWords::StillInForce(const cli::EncodeSettings& settings) const {
    std::vector<std::string> texts;
    for (const auto& [option, text] : texts_) {
        const cli::Option* const row = cli::FindOption(option);
        if (!typed_last_.contains(option) && row != nullptr && cli::Given(*row, settings))
            texts.push_back(text);
    }
    return texts;
}

}  // namespace app
