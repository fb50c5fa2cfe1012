// The menu of the sound and the meter of its level.
#include <QAction>
#include <QProgressBar>

#include "gui/window_fixture.h"

namespace window_test {
namespace {

struct FakeMeter : platform::SoundMeter {
    explicit FakeMeter(platform::SoundLevels& given) : levels(given) { ++open; }
    ~FakeMeter() override { --open; }
    platform::SoundLevels Take() override {
        ++looks;
        return levels;
    }
    platform::SoundLevels& levels;
    static inline int open = 0;
    static inline int looks = 0;
};

class Sound : public Window {
  protected:
    void Begin() {
        window().SetSoundMeter([this](const std::string& choice) {
            choices.push_back(choice);
            return std::make_unique<FakeMeter>(levels);
        });
    }
    void Look() {
        const int before = FakeMeter::looks;
        RunUntil([before] { return FakeMeter::looks > before + 1; });
    }
    QWidget& Meter() { return Find<QWidget>("levelMeter"); }
    ~Sound() override { qunsetenv("TESSIVO_SOUND"); }

    platform::SoundLevels levels;
    std::vector<std::string> choices;
};

TEST_F(Sound, IsChosenForRecordingsAndHeardMeanwhile) {
    Begin();
    EXPECT_TRUE(choices.empty()) << "nobody is listened to unasked";
    Find<QAction>("bothSounds").trigger();
    EXPECT_EQ(qEnvironmentVariable("TESSIVO_SOUND"), QStringLiteral("both"));
    Find<QAction>("showLevel").trigger();
    levels.devices = {{"Headset", 0.1}, {"Monitor of Boxes", 1}};
    Look();
    EXPECT_TRUE(Meter().isVisible());
    const auto bars = Meter().findChildren<QProgressBar*>();
    ASSERT_EQ(bars.size(), 2);
    EXPECT_EQ(bars[0]->value(), -20);
    EXPECT_EQ(bars[1]->value(), 0);
    EXPECT_EQ(bars[0]->accessibleName(), QStringLiteral("Level of Headset"));

    Find<QAction>("defaultSound").trigger();
    EXPECT_FALSE(qEnvironmentVariableIsSet("TESSIVO_SOUND"));
    EXPECT_EQ(choices, (std::vector<std::string>{"both", ""}));
    EXPECT_EQ(FakeMeter::open, 1) << "the first is let go";
    levels = {{}, "no server"};
    Look();
    const auto texts = Meter().findChildren<QLabel*>();
    EXPECT_TRUE(std::any_of(texts.begin(), texts.end(), [](const QLabel* label) {
        return label->isVisible() && label->text() == QStringLiteral("no server");
    }));

    Find<QAction>("showLevel").trigger();
    EXPECT_FALSE(Meter().isVisible());
    EXPECT_EQ(FakeMeter::open, 0);
}

TEST_F(Sound, KeepsShowingItsLevelInTheNextWindow) {
    Begin();
    Find<QAction>("showLevel").trigger();
    qputenv("TESSIVO_SOUND", "3");
    Open();
    Begin();
    EXPECT_TRUE(Meter().isVisible());
    EXPECT_EQ(choices.back(), "3");
    EXPECT_TRUE(Find<QAction>("soundChosen").isChecked());
}

}  // namespace
}  // namespace window_test
