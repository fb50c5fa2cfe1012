#include "engine/object_model/screen_question.h"

#include <atomic>
#include <future>
#include <thread>

namespace engine {

ScreenSize ScreenQuestion::Answer(const ScreenArea& area, std::int32_t rate_thousandths) {
    std::atomic<bool> answered{false};
    std::packaged_task<ScreenSize()> ask([&] { return share_.Ask(area, rate_thousandths); });
    std::future<ScreenSize> answer = ask.get_future();
    std::thread asker([&] {
        ask();
        answered = true;
        loop_.Post([] {});  // the loop looks again
    });
    loop_.RunUntil([&] { return answered.load(); });
    asker.join();
    return answer.get();
}

}  // namespace engine
