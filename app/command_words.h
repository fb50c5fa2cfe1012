// The words of the command language as hosts offer them, and what they tell a person about them.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "cli/encode_settings.h"
#include "platform/factory.h"
#include "platform/form_events.h"

namespace app {

/// As platform::FormEvents has it. Devices are those of an encoder that the factory makes, and none
/// where it makes none.
platform::FollowingWords WordsAfter(const std::string& option, platform::Factory& factory);

/// "Did you mean -profile?" for the first word of a command that looks like an option and is none;
/// "" where nothing comes close.
std::string DidYouMean(const std::vector<std::string>& words);

/// Remembers how options were typed, to say which of them later commands still use.
class TypedWords {
  public:
    /// @param typed  the options that the command said, also in its configuration files
    void Read(const std::vector<std::string>& words, const std::set<std::string_view>& typed);
    void Forget() { texts_.clear(); }

    /// Options of earlier commands whose settings are given still, with their values.
    std::vector<std::string> StillInForce(const cli::EncodeSettings& settings) const;

  private:
    std::map<std::string_view, std::string> texts_;  // option to it with its values, as typed last
    std::set<std::string_view> typed_last_;          // by the last command
};

}  // namespace app
