#include "cli/parameter_parser.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <set>
#include <string_view>

#include <fmt/core.h>

#include "cli/config_file.h"
#include "platform/text.h"

namespace cli {
namespace {

constexpr int kDeepestNesting = 16;
constexpr std::string_view kSaveWord = "-s_config";
constexpr std::string_view kLoadWord = "-config";
constexpr std::string_view kInputWord = "-input";

bool Accepts(const TextRule& rule, const std::string& text) {
    return std::find(rule.accepted.begin(), rule.accepted.end(), text) != rule.accepted.end();
}

bool Accepts(const NumberRule& rule, std::int32_t number) {
    return number >= rule.lowest && number <= rule.highest &&
           (number - rule.lowest) % rule.step == 0;
}

bool HasOptionalValue(const std::vector<std::string>& words, std::size_t index) {
    return index < words.size() && !platform::StartsWith(words[index], "-");
}

}  // namespace

struct ParameterParser::Call {
    const std::vector<std::string>& words;
    const Call* outer;  // whose "-config" has led to these words, or null
    int depth = outer == nullptr ? 0 : outer->depth + 1;
    std::string text_to_save = {};    // what "-s_config" writes
    std::string save_name = {};       // from "-s_config"
    std::string load_name = {};       // from "-config", the last that the pre-pass read
    std::set<std::size_t> read = {};  // places of the "-config" words that were read
};

ParameterParser::ParameterParser(EncodeSettings& settings, ValueReaders& readers,
                                 platform::OutputPane& pane, CommandActions& actions,
                                 platform::SessionState& state)
    : settings_(settings), readers_(readers), pane_(pane), actions_(actions), state_(state) {}

bool ParameterParser::ParseParameters(const std::vector<std::string>& words) {
    settings_.duration_typed = false;
    typed_options_.clear();
    outcome_ = Outcome::Refused;  // what it is when an error ends the parse
    outcome_ = Parse(words, nullptr);
    return outcome_ == Outcome::Accepted;
}

bool ParameterParser::Refused() const { return outcome_ == Outcome::Refused; }

ParameterParser::Outcome ParameterParser::Parse(const std::vector<std::string>& words,
                                                const Call* outer) {
    Call call{words, outer};
    const Outcome files_read = PrePass(call);
    if (files_read != Outcome::Accepted) return files_read;
    if (words.size() == 1) {
        const Option* const option = FindOption(platform::LowerCase(words.front()));
        if (option != nullptr && option->show != nullptr) {
            (actions_.*option->show)();
            return Outcome::Shown;
        }
    }
    if (words.size() == 2 && platform::LowerCase(words.front()) == kInputWord) {
        return ShowInputInfo(call);
    }
    if (!MainPass(call)) return Outcome::Refused;
    return Save(call) ? Outcome::Accepted : Outcome::Refused;
}

// A configuration file saves before the words around it are taken, so theirs are looked at, too.
bool ParameterParser::Save(const Call& call) {
    if (call.save_name.empty()) return true;
    std::vector<std::string> inputs{settings_.input};
    for (const Call* outer = call.outer; outer != nullptr; outer = outer->outer) {
        for (std::size_t i = 1; i < outer->words.size(); ++i) {
            if (platform::LowerCase(outer->words[i - 1]) == kInputWord)
                inputs.push_back(outer->words[i]);
        }
    }
    return WriteConfigFile(*state_.g_objFSO, pane_, actions_, call.save_name, call.text_to_save,
                           inputs);
}

// A nested call leaves arg_index at the word count of its file, and this pass goes on from there:
// behind words that it has not looked at, or before words that it has. Saved texts have always been
// put together so. A "-config" that was read is not read again, or the pass would never end.
ParameterParser::Outcome ParameterParser::PrePass(Call& call) {
    for (arg_index = 0; arg_index < call.words.size(); ++arg_index) {
        const std::string& word = call.words[arg_index];
        if (word == kSaveWord) {
            ++arg_index;
            continue;
        }
        call.text_to_save += word;
        call.text_to_save += ' ';
        if (word != kLoadWord || !call.read.insert(arg_index).second) continue;
        const Outcome file = ReadConfig(call);
        if (file != Outcome::Accepted) return file;
    }
    return Outcome::Accepted;
}

ParameterParser::Outcome ParameterParser::ReadConfig(Call& call) {
    call.load_name = readers_.ReadString(call.words, arg_index, arg_index + 1);
    if (call.load_name.empty()) return Outcome::Refused;
    ++arg_index;
    platform::FileSystem& files = *state_.g_objFSO;
    if (call.depth == kDeepestNesting) {
        pane_.OutputError(fmt::format("Configuration file {} is nested more than {} deep",
                                      files.GetAbsolutePathName(call.load_name), kDeepestNesting));
        return Outcome::Refused;
    }
    const std::optional<std::vector<std::string>> words =
        ReadConfigFile(files, pane_, call.load_name);
    return words ? Parse(*words, &call) : Outcome::Refused;
}

ParameterParser::Outcome ParameterParser::ShowInputInfo(const Call& call) {
    settings_.input = readers_.ReadString(call.words, 0, 1);
    if (settings_.input.empty()) return Outcome::Refused;
    actions_.PrintFileInfo();
    return Outcome::Shown;
}

bool ParameterParser::MainPass(Call& call) {
    for (arg_index = 0; arg_index < call.words.size(); ++arg_index) {
        const std::size_t option_index = arg_index;
        const std::string& word = call.words[option_index];
        const Option* const option = FindOption(platform::LowerCase(word));
        if (option == nullptr || option->show != nullptr) {
            pane_.OutputError(fmt::format("Invalid parameter: {}", word));
            return false;
        }
        typed_options_.insert(option->name);
        if (option->flag != nullptr) settings_.*option->flag = true;
        for (const OptionValue& value : option->values) {
            if (!TakeValue(value, option_index, call)) return false;
        }
    }
    arg_index = call.words.size();  // also when a "-config" stood last and its name was skipped
    return true;
}

bool ParameterParser::TakeValue(const OptionValue& value, std::size_t option_index, Call& call) {
    switch (value.kind) {
        case ValueKind::None:
            return true;
        case ValueKind::Text:
        case ValueKind::InputName:
        case ValueKind::UpperText:
        case ValueKind::OptionalText:
            return TakeText(value, option_index, call);
        case ValueKind::Integer:
        case ValueKind::OptionalInteger:
            return TakeInteger(value, option_index, call);
        case ValueKind::Float:
            return TakeFloat(value, option_index, call);
        case ValueKind::EndMark:
            return TakeEndMark(value, option_index, call);
        case ValueKind::SaveName:
            return TakeSaveName(option_index, call);
        case ValueKind::LoadName:
            return TakeLoadName(option_index, call);
    }
    return false;
}

bool ParameterParser::TakeText(const OptionValue& value, std::size_t option_index,
                               const Call& call) {
    const std::size_t value_index = arg_index + 1;
    if (value.kind == ValueKind::OptionalText) {
        if (!HasOptionalValue(call.words, value_index)) return true;
        value.store_text(settings_, call.words[value_index]);  // may be empty: it is optional
        arg_index = value_index;
        return true;
    }
    std::string text = readers_.ReadString(call.words, option_index, value_index);
    if (text.empty()) {
        if (value.kind == ValueKind::InputName) value.store_text(settings_, text);
        return false;
    }
    if (value.kind == ValueKind::UpperText) text = platform::UpperCase(text);
    if (value.text_rule != nullptr && !Accepts(*value.text_rule, text)) {
        pane_.OutputError(std::string(value.text_rule->line));
        return false;
    }
    value.store_text(settings_, text);
    arg_index = value_index;
    return true;
}

bool ParameterParser::TakeInteger(const OptionValue& value, std::size_t option_index,
                                  const Call& call) {
    const std::size_t value_index = arg_index + 1;
    if (value.kind == ValueKind::OptionalInteger && !HasOptionalValue(call.words, value_index)) {
        value.store_integer(settings_, value.fallback);
        return true;
    }
    const std::int32_t number = readers_.ReadInteger(call.words, option_index, value_index);
    if (number == kUnread) return false;
    const std::string& option = call.words[option_index];
    if (value.number_rule != nullptr && !Accepts(*value.number_rule, number)) {
        const NumberRule& rule = *value.number_rule;
        if (rule.names != NumberRule::Names::Nothing) {
            const bool names_option = rule.names == NumberRule::Names::Option;
            pane_.OutputError(
                fmt::format("{}{}", rule.line, names_option ? option : call.words[value_index]));
        }
        return false;
    }
    if (number > std::numeric_limits<std::int32_t>::max() / value.factor) {
        readers_.RefuseInteger(option);
        return false;
    }
    value.store_integer(settings_, number * value.factor);
    arg_index = value_index;
    return true;
}

bool ParameterParser::TakeFloat(const OptionValue& value, std::size_t option_index,
                                const Call& call) {
    const float number = readers_.ReadFloat(call.words, option_index, arg_index + 1);
    if (number == static_cast<float>(kUnread)) return false;
    const float product = number * static_cast<float>(value.factor);
    if (!std::isfinite(product)) {
        readers_.RefuseFloat(call.words[option_index]);
        return false;
    }
    value.store_float(settings_, product);
    ++arg_index;
    return true;
}

bool ParameterParser::TakeEndMark(const OptionValue& value, std::size_t option_index,
                                  const Call& call) {
    const std::size_t value_index = arg_index + 1;
    if (value_index >= call.words.size()) {
        readers_.RefuseFormat(call.words[option_index]);
        return false;
    }
    const std::string& word = call.words[value_index];
    const std::int32_t mark = word == "end" ? 0 : readers_.ConvertStringToInteger(word);
    if (mark == kUnread) return false;
    if (mark < 0) {
        readers_.RefuseText(word);
        return false;
    }
    value.store_integer(settings_, mark);
    arg_index = value_index;
    return true;
}

bool ParameterParser::TakeSaveName(std::size_t option_index, Call& call) {
    call.save_name = readers_.ReadString(call.words, option_index, arg_index + 1);
    ++arg_index;
    return !call.save_name.empty();
}

// The pre-pass compares exactly, this pass does not: "-CONFIG" alone has no name from there.
bool ParameterParser::TakeLoadName(std::size_t option_index, const Call& call) {
    if (call.load_name.empty()) {
        readers_.RefuseFormat(call.words[option_index]);
        return false;
    }
    ++arg_index;
    return true;
}

}  // namespace cli
