#include "codecs/wma/attack_detector.h"

#include <cmath>
#include <functional>
#include <random>

#include "codecs/common/index.h"

namespace codecs::wma {
namespace {

constexpr int kSlice = 128;
constexpr int kSlices = 64;
constexpr int kAttack = 40;  // slice in which the sound changes, where it does

struct AttackCase {
    const char* why;
    double before;  // amplitude
    double after;
    double cycles;  // of a sine a sample; 0 = noise
    bool attack;
};

TEST(AttackDetector, FindsWhatBecomesLouderAtOnce) {
    constexpr AttackCase kCases[] = {
        // why                       before after  cycles attack
        {"silence, then noise", 0, 8000, 0, true},
        {"soft noise, then loud", 100, 3000, 0, true},
        {"steady noise", 3000, 3000, 0, false},
        {"noise that ends", 8000, 0, 0, false},
        {"a steady low tone", 20000, 20000, 0.002, false},
        {"a steady high tone", 20000, 20000, 0.2, false},
        {"a tone that sets in", 0, 20000, 0.05, true},
        {"what nobody hears", 0, 4, 0, false},
    };
    for (const AttackCase& c : kCases) {
        AttackDetector detector(kSlice);
        std::minstd_rand random(7);
        std::vector<float> samples;
        for (int n = 0; n < kSlices * kSlice; ++n) {
            const double amplitude = n < kAttack * kSlice ? c.before : c.after;
            const double wave = c.cycles > 0 ? std::sin(6.2831853 * c.cycles * n)
                                             : static_cast<double>(random() % 2001) / 1000 - 1;
            samples.push_back(static_cast<float>(amplitude * wave));
        }
        std::vector<bool> attacks(kSlices);
        detector.Find(samples, attacks);
        // A sound that is there from the start begins too.
        for (int i = 8; i < kSlices; ++i)
            EXPECT_EQ(attacks[Index(i)], c.attack && i == kAttack) << c.why << ", slice " << i;
    }
}

}  // namespace
}  // namespace codecs::wma
