// Which words hosts offer after an option.
#include "app/command_words.h"

#include <gmock/gmock.h>

#include "support/fake_host.h"

namespace app {
namespace {

TEST(CommandWords, DevicesAreOfferedByNumberWithTheirNames) {
    test_support::FakeFactory factory;
    factory.on_encoder = [](test_support::FakeEncoder& encoder) {
        encoder.plugins.items = {std::make_shared<test_support::FakePluginInfo>(
                                     true, 1, std::vector<std::string>{"mic", "line"}),
                                 std::make_shared<test_support::FakePluginInfo>(
                                     true, 2, std::vector<std::string>{"cam"})};
    };
    struct Case {
        const char* option;
        std::vector<std::string> words;
    };
    for (const Case& c : {Case{"-adevice", {"0 mic", "1 line"}}, Case{"-VDevice", {"0 cam"}}}) {
        std::vector<std::string> words;
        for (const platform::CommandWord& word : WordsAfter(c.option, factory).words)
            words.push_back(word.word + " " + word.note);
        EXPECT_EQ(words, c.words) << c.option;
    }
    factory.on_encoder = [](test_support::FakeEncoder&) {
        throw platform::Error(platform::kUnspecified, "no server");
    };
    EXPECT_THAT(WordsAfter("-adevice", factory).words, testing::IsEmpty());
}

}  // namespace
}  // namespace app
