#include "engine/sources/screen/x11_screen.h"

#include <fmt/format.h>
#include <xcb/composite.h>
#include <xcb/randr.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <new>
#include <utility>

#include "engine/base/av/frame_damage.h"
#include "engine/sources/screen/area_finder.h"
#include "engine/sources/screen/named_area.h"
#include "engine/sources/screen/rest_repeats.h"
#include "engine/sources/screen/x11_changes.h"
#include "engine/sources/screen/x11_frames.h"
#include "engine/sources/screen/x11_pointer.h"
#include "platform/error.h"

namespace engine {
namespace {

// A redraw is many operations; a frame of its first is not wanted.
constexpr Ticks kSettle = Ticks::FromMilliseconds(4);
// A change of size is told within milliseconds; a server that refuses for longer is broken.
constexpr Ticks kPatience = Ticks::FromMilliseconds(5000);

class X11Screen : public LiveSource {
  public:
    X11Screen(const ScreenArea& area, std::int32_t rate_thousandths, FramePool& frames);

    bool Read(FrameHandle& frame) override;
    void Wake() override { display_.Wake(); }
    std::int64_t TakeMissed() override { return missed_.exchange(0); }

  private:
    void FollowWindow();
    void HandleEvents(Ticks since);
    void HandleEvent(const xcb_generic_event_t& event);
    void FindAgain();
    void TrackPointer(Ticks now);
    bool NextFrame();
    bool Grab(Ticks now);
    void Deliver(X11Image& image, Ticks time);
    PixelBox DamageSinceLast();
    void CountMissed(Ticks now);
    void WaitUntil(Ticks time, bool events) const;
    Ticks RepeatDue() const { return Ticks{last_->pts} + std::max(period_, repeats_.Interval()); }

    bool IsWindow() const { return area_.kind == ScreenArea::Kind::Window; }
    PixelBox ImageBox() const { return {0, 0, images_.area().width, images_.area().height}; }
    PixelBox PointerInImage() const {
        return pointer_.Box().Moved(-finder_.Box().x, -finder_.Box().y);
    }

    const ScreenArea area_;
    FramePool& frames_;
    const Ticks period_;
    // What follows changes that come regularly but not exactly so is given all of them.
    const Ticks early_{period_.count / 4};
    const Ticks settle_{std::min(kSettle, early_)};
    X11Display display_;
    AreaFinder finder_;
    X11Frames images_;
    X11Pointer pointer_;
    X11Changes changes_;

    xcb_pixmap_t pixmap_ = 0;  // what a window is drawn into
    bool visible_ = true;
    bool place_changed_ = false;
    bool changed_ = true;  // something on the screen may have
    bool drawn_ = true;    // something in the frame has, or its pointer
    RestRepeats repeats_;
    Ticks changed_at_;   // about when the first change was
    Ticks allowed_;      // when the rate has room for the next frame
    Ticks pointer_due_;  // when to look for it again
    Ticks returned_;     // when Read last did
    int refusals_ = 0;   // one after the other
    FrameHandle last_;
    std::int64_t delivered_ = 0;  // frames that are not given again
    PixelBox pointer_drawn_;      // in the last of them
    std::atomic<std::int64_t> missed_ = 0;
};

X11Screen::X11Screen(const ScreenArea& area, std::int32_t rate_thousandths, FramePool& frames)
    : area_(area),
      frames_(frames),
      period_{Ticks::kPerSecond * 1000 / rate_thousandths},
      finder_(display_, area),
      images_(display_),
      pointer_(display_, finder_.window(), area.pointer),
      changes_(display_, finder_.window()) {
    xcb_connection_t* server = display_.get();
    const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(server, finder_.window(), XCB_CW_EVENT_MASK, &events);
    if (display_.Has(xcb_randr_id))
        xcb_randr_select_input(
            server, display_.root(),
            XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE);
    if (IsWindow()) FollowWindow();
    FindAgain();
}

// A window is drawn into memory of its own from now on, so that what lies over it is not recorded.
void X11Screen::FollowWindow() {
    if (!display_.Has(xcb_composite_id))
        throw platform::Error(platform::kNotImplemented,
                              "This X server cannot record a window, for it lacks the Composite "
                              "extension: choose a region of the screen");
    xcb_connection_t* server = display_.get();
    Own(xcb_composite_query_version_reply(server, xcb_composite_query_version(server, 0, 4),
                                          nullptr));
    xcb_composite_redirect_window(server, finder_.window(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
}

void X11Screen::FindAgain() {
    place_changed_ = false;
    finder_.FindAgain();
    const PixelLayout& layout = LayoutOf(display_, finder_.window());
    if (!IsWindow()) {
        images_.Show(display_.root(), finder_.Box(), layout);
    } else {
        const auto state = display_.Await<xcb_get_window_attributes_reply_t>(
            xcb_get_window_attributes(display_.get(), finder_.window()));
        visible_ = state && state->map_state == XCB_MAP_STATE_VIEWABLE;
        if (!visible_) return;  // the last frame stays until it is there again
        const auto geometry = display_.Await<xcb_get_geometry_reply_t>(
            xcb_get_geometry(display_.get(), finder_.window()));
        if (pixmap_ != 0) xcb_free_pixmap(display_.get(), pixmap_);
        pixmap_ = xcb_generate_id(display_.get());
        xcb_composite_name_window_pixmap(display_.get(), finder_.window(), pixmap_);
        const int border = geometry ? geometry->border_width : 0;
        images_.Show(pixmap_, finder_.Box().Moved(border, border), layout);
    }
    changed_ = drawn_ = true;
}

void X11Screen::HandleEvent(const xcb_generic_event_t& event) {
    pointer_.HandleEvent(event);
    const int type = event.response_type & 0x7F;
    if (display_.Has(xcb_randr_id)) {
        const int randr = display_.FirstEvent(xcb_randr_id);
        if (type == randr + XCB_RANDR_SCREEN_CHANGE_NOTIFY || type == randr + XCB_RANDR_NOTIFY)
            place_changed_ = true;
    }
    switch (type) {
        case XCB_CONFIGURE_NOTIFY:
        case XCB_MAP_NOTIFY:
        case XCB_UNMAP_NOTIFY:
        case XCB_DESTROY_NOTIFY:
            place_changed_ = true;
            break;
        default:
            break;
    }
}

void X11Screen::HandleEvents(Ticks since) {
    bool damaged = !changes_.AreTold();
    while (const auto event = display_.NextEvent()) {
        damaged = changes_.IsToldBy(*event) || damaged;
        HandleEvent(*event);
    }
    if (place_changed_) FindAgain();
    if (damaged && !changed_) changed_at_ = since;
    changed_ = changed_ || damaged;
}

void X11Screen::TrackPointer(Ticks now) {
    pointer_due_ = now + period_;
    const PixelBox before = PointerInImage();
    if (!pointer_.Track()) return;
    if (Intersection(before, ImageBox()).IsEmpty() &&
        Intersection(PointerInImage(), ImageBox()).IsEmpty())
        return;
    if (!changed_) changed_at_ = now - settle_;
    changed_ = drawn_ = true;
}

// The rate's room is used up also when it turns out that what has changed lies outside the area.
bool X11Screen::Grab(Ticks now) {
    allowed_ = std::max(allowed_, now) + period_;
    TrackPointer(now);
    changed_ = false;
    for (const PixelBox& box : changes_.Take()) {
        const PixelBox inside = Intersection(box, finder_.Box());
        if (inside.IsEmpty()) continue;
        images_.MarkStale(inside.Moved(-finder_.Box().x, -finder_.Box().y));
        drawn_ = true;
    }
    if (!drawn_ || !visible_) return false;
    X11Image* image = images_.Fetch();
    if (image == nullptr) {
        // The window or the screen has changed its size or is about to say so.
        place_changed_ = changed_ = true;
        if (++refusals_ * period_.count < kPatience.count) return false;
        throw platform::Error(
            platform::kUnspecified,
            fmt::format("The X server no longer gives pictures of {}", Describe(area_)));
    }
    refusals_ = 0;
    drawn_ = false;
    Deliver(*image, allowed_ - period_);
    return true;
}

// The pointer leaves what it covered, and covers something else.
PixelBox X11Screen::DamageSinceLast() {
    PixelBox changed = images_.TakeMarked();
    const PixelBox drawn = Intersection(PointerInImage(), ImageBox());
    for (const PixelBox& box : {std::exchange(pointer_drawn_, drawn), drawn})
        if (!box.IsEmpty()) changed = changed.IsEmpty() ? box : Around(changed, box);
    return changed;
}

// Times lie an interval apart at least, so that players of an even rate have a place for each.
void X11Screen::Deliver(X11Image& image, Ticks time) {
    pointer_.Draw(image.pixels(), images_.stride(), images_.layout(), finder_.Box());
    image.stale.Add(Intersection(PointerInImage(), ImageBox()));
    last_ = frames_.Get();
    last_->format = images_.layout().format;
    last_->width = images_.area().width;
    last_->height = images_.area().height;
    last_->buf[0] = CheckAllocated(av_buffer_ref(image.memory.buffer.get()));
    last_->data[0] = image.pixels();
    last_->linesize[0] = images_.stride();
    last_->pts = time.count;
    TellDamage(*last_, {++delivered_, DamageSinceLast()});
    repeats_.Changed();
}

void X11Screen::WaitUntil(Ticks time, bool events) const {
    const std::int64_t left = time.count - CaptureNow().count;
    if (left > 0) display_.Wait(std::chrono::nanoseconds(left * 100), events);
}

bool X11Screen::Read(FrameHandle& frame) {
    try {
        if (!NextFrame()) return false;
    } catch (const platform::Error&) {
        // A request that was given up looks like one that failed.
        if (display_.IsWoken()) return false;
        throw;
    }
    frame = frames_.Get();
    if (av_frame_ref(frame.get(), last_.get()) < 0) throw std::bad_alloc();
    returned_ = CaptureNow();
    return true;
}

bool X11Screen::NextFrame() {
    HandleEvents(returned_);
    if (changed_ && last_) CountMissed(CaptureNow());
    while (!display_.IsWoken()) {
        const Ticks now = CaptureNow();
        HandleEvents(now);
        if (!changed_ && now >= pointer_due_) TrackPointer(now);
        if (changed_) {
            const Ticks due = std::max(changed_at_ + settle_, allowed_ - early_);
            if (now < due)
                WaitUntil(due, false);
            else if (Grab(now))
                return true;
        } else if (last_ && now >= RepeatDue()) {
            last_->pts = now.count;
            repeats_.Repeated();
            return true;
        } else {
            WaitUntil(last_ ? std::min(pointer_due_, RepeatDue()) : pointer_due_, true);
        }
    }
    return false;
}

void X11Screen::CountMissed(Ticks now) {
    if (now > allowed_) missed_ += (now - allowed_).count / period_.count;
}

}  // namespace

std::unique_ptr<LiveSource> OpenX11Screen(const ScreenArea& area, std::int32_t rate_thousandths,
                                          FramePool& frames) {
    return std::make_unique<X11Screen>(area, rate_thousandths, frames);
}

}  // namespace engine
