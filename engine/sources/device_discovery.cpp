#include "engine/sources/device_discovery.h"

#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "engine/sources/audio/alsa_captures.h"
#include "engine/sources/audio/pulse_sources.h"
#include "engine/sources/camera/video_nodes.h"
#include "engine/sources/screen/screens.h"

namespace engine {
namespace {

using Clock = std::chrono::steady_clock;

// A living server that its socket starts on demand needs most of a second; the rest is for ALSA.
constexpr std::chrono::milliseconds kServerPatience{1000};
constexpr std::chrono::milliseconds kPatience{1250};

struct AudioFacts {
    std::optional<PulseFacts> pulse;
    std::vector<AlsaCapture> captures;
};

// A question that is answered on a thread of its own. A driver or a server that never answers
// cannot be interrupted; its thread is then left behind and keeps the shared answer alive.
template <typename Facts>
class Question {
  public:
    explicit Question(std::function<Facts()> ask) {
        try {
            std::thread([answer = answer_, ask = std::move(ask)] {
                Facts facts;
                try {
                    facts = ask();
                } catch (const std::exception&) {
                    facts = Facts();
                }
                const std::lock_guard lock(answer->mutex);
                answer->facts = std::move(facts);
                answer->arrived.notify_all();
            }).detach();
        } catch (const std::exception&) {
            answer_->facts.emplace();  // no thread to ask from
        }
    }

    Facts Answer(Clock::time_point deadline) {
        std::unique_lock lock(answer_->mutex);
        answer_->arrived.wait_until(lock, deadline, [&] { return answer_->facts.has_value(); });
        return answer_->facts ? std::move(*answer_->facts) : Facts();
    }

  private:
    struct Shared {
        std::mutex mutex;
        std::condition_variable arrived;
        std::optional<Facts> facts;
    };
    std::shared_ptr<Shared> answer_ = std::make_shared<Shared>();
};

}  // namespace

DeviceFacts AskBackends(const DeviceBackends& backends, std::chrono::milliseconds patience) {
    const Clock::time_point deadline = Clock::now() + patience;
    Question<AudioFacts> audio([pulse = backends.pulse, alsa = backends.alsa] {
        AudioFacts facts;
        try {
            facts.pulse = pulse();
        } catch (const std::exception&) {
            facts.pulse.reset();
        }
        if (!facts.pulse) facts.captures = alsa();
        return facts;
    });
    Question<std::vector<VideoNode>> cameras(backends.cameras);
    Question<ScreenFacts> screens(backends.screens);

    DeviceFacts facts;
    AudioFacts heard = audio.Answer(deadline);
    facts.pulse = std::move(heard.pulse);
    facts.captures = std::move(heard.captures);
    facts.nodes = cameras.Answer(deadline);
    facts.screens = screens.Answer(deadline);
    return facts;
}

DeviceList DiscoverDevices() {
    const DeviceBackends backends = {
        [] { return AskPulseServer(kServerPatience); },
        AlsaCaptures,
        VideoNodes,
        Screens,
    };
    return MakeDeviceList(AskBackends(backends, kPatience));
}

}  // namespace engine
