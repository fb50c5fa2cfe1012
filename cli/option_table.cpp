#include "cli/option_table.h"

#include "cli/option_row.h"

namespace cli {

std::span<const OptionBlock> OptionBlocks() {
    static const std::array kBlocks = {InputOutputOptions(), ProfileOptions(), AudioOptions(),
                                       VideoOptions(), SessionOptions()};
    return kBlocks;
}

const Option* FindOption(std::string_view lower_case_word) {
    for (const OptionBlock& block : OptionBlocks())
        for (const Option& option : block.options)
            if (option.name == lower_case_word) return &option;
    return nullptr;
}

bool Given(const Option& option, const EncodeSettings& settings) {
    const auto given = option.values.front().given;
    if (given != nullptr) return given(settings);
    return option.flag != nullptr && settings.*option.flag;
}

}  // namespace cli
