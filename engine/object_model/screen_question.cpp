#include "engine/object_model/screen_question.h"

#include <atomic>
#include <future>
#include <thread>

namespace engine {

ScreenSize AskForScreen(platform::EventLoop& loop, ScreenShare& share, const CapturePlan& wanted) {
    std::atomic<bool> answered{false};
    std::packaged_task<ScreenSize()> ask([&] { return share.Ask(wanted.area, wanted.rate); });
    std::future<ScreenSize> answer = ask.get_future();
    std::thread asker([&] {
        ask();
        answered = true;
        loop.Post([] {});  // the loop looks again
    });
    loop.RunUntil([&] { return answered.load(); });
    asker.join();
    return answer.get();
}

}  // namespace engine
