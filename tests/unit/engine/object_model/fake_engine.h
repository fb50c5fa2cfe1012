// A tree over files that exist in memory only, and a run that the test drives.
#pragma once

#include <future>
#include <stdexcept>

#include "engine/object_model/engine_parts.h"
#include "engine/object_model/session_tree.h"
#include "support/error_of.h"
#include "support/fake_host.h"

namespace test_support {

/// What the files of the tests hold. Times in milliseconds.
inline engine::MediaFileInfo FilmInfo(int audio_ms = 10000, int video_ms = 10000) {
    engine::MediaFileInfo info;
    if (audio_ms > 0)
        info.audio = {.sampling_rate = 44100,
                      .channels = 2,
                      .duration = engine::Ticks::FromMilliseconds(audio_ms)};
    if (video_ms > 0)
        info.video = {.width = 640,
                      .height = 480,
                      .frame_rate = {30000, 1001},
                      .duration = engine::Ticks::FromMilliseconds(video_ms)};
    return info;
}

/// Records what it is asked; the test calls `callbacks` in the place of the run's threads.
struct FakeRun : engine::SessionRun, engine::RunFigures {
    struct Record {
        engine::EncodePlan plan;
        engine::RunCallbacks callbacks;
        int starts = 0, stops = 0, pauses = 0, resumes = 0;
        bool destroyed = false;
        platform::OutputStats audio;
        std::function<void()> on_start;  // may throw
    };
    explicit FakeRun(std::shared_ptr<Record> shared) : record(std::move(shared)) {}
    ~FakeRun() override { record->destroyed = true; }
    void Start() override {
        ++record->starts;
        if (record->on_start) record->on_start();
    }
    void Stop() override { ++record->stops; }
    void Pause() override { ++record->pauses; }
    void Resume() override { ++record->resumes; }
    const engine::RunFigures& Figures() const override { return *this; }
    platform::Currency EncodingTime() const override { return platform::Currency::FromRaw(1234); }
    platform::OutputStats Of(engine::MediaKind kind) const override {
        return kind == engine::MediaKind::Audio ? record->audio : platform::OutputStats();
    }
    platform::OutputStats Total() const override { return record->audio; }
    platform::FileArchiveStats File() const override {
        return {platform::Currency::FromRaw(4321), {}};
    }
    std::shared_ptr<Record> record;
};

/// A desktop that hands out a screen when the test lets the person answer.
struct FakeShare : engine::ScreenShare {
    engine::ScreenSize Ask(const engine::ScreenArea& area, std::int32_t rate) override {
        asked_rate = rate;
        EXPECT_EQ(area.kind, engine::ScreenArea::Kind::Screen);
        if (!answer.get_future().get()) throw platform::Error(platform::kAccessDenied, "declined");
        return {800, 602};
    }
    void Cancel() override { answer.set_value(false); }
    std::promise<bool> answer;
    std::int32_t asked_rate = 0;
};

/// Parts over a table of media files by their host paths.
struct FakeEngine {
    FakeEngine() {
        files->AddFile("/home/film.avi");
        media["/home/film.avi"] = FilmInfo();
    }
    engine::EngineParts Parts() {
        return {[this](const std::string& path) {
                    ++probes;
                    if (!media.contains(path))
                        throw platform::Error(platform::kFileNotFound, path + " does not exist");
                    return media.at(path);
                },
                [this](engine::EncodePlan plan, engine::RunCallbacks callbacks) {
                    if (on_make_run) on_make_run();
                    if (on_plan) on_plan(plan);
                    runs.push_back(std::make_shared<FakeRun::Record>());
                    runs.back()->plan = std::move(plan);
                    runs.back()->callbacks = std::move(callbacks);
                    runs.back()->on_start = on_start;
                    return std::make_unique<FakeRun>(runs.back());
                },
                files,
                [this] {
                    ++device_questions;
                    return devices;
                },
                [this] {
                    return engine::ScreenFacts{screen_access, {}};
                },
                [this](const engine::ScreenArea& area) {
                    areas.push_back(area);
                    return engine::ScreenSize{1366, 769};
                },
                [this] { return screen_choice; },
                [this] { return sound_choice; },
                [this] {
                    auto share = std::make_unique<FakeShare>();
                    shares.push_back(share.get());
                    return share;
                },
                [this](const engine::Device& camera, const engine::CameraRequest& request) {
                    cameras.push_back(camera.id);
                    camera_requests.push_back(request);
                    return camera_format;
                },
                [this] { return shows_pointer; }};
    }
    /// A microphone, a camera and a screen.
    engine::DeviceList devices = {
        {engine::DeviceKind::PulseSource, "mic.1", "Microphone", true, false},
        {engine::DeviceKind::Camera, "/dev/video0", "Webcam", true, false},
        {engine::DeviceKind::Screen, "x11", "Screen", false, false},
        {engine::DeviceKind::Screen, "x11:monitor:HDMI-1", "Screen, monitor HDMI-1", false, false}};
    int device_questions = 0;
    engine::CameraFormat camera_format = {0, 640, 480, {1001, 30000}};
    std::vector<std::string> cameras;  // asked for their format
    std::vector<engine::CameraRequest> camera_requests;
    engine::ScreenAccess screen_access = engine::ScreenAccess::X11;
    std::string screen_choice, sound_choice;
    bool shows_pointer = true;
    std::vector<FakeShare*> shares;
    std::vector<engine::ScreenArea> areas;  // asked for their size
    std::shared_ptr<FakeFileSystem> files = std::make_shared<FakeFileSystem>();
    std::map<std::string, engine::MediaFileInfo> media;
    int probes = 0;
    std::vector<std::shared_ptr<FakeRun::Record>> runs;
    std::function<void()> on_make_run, on_start;
    std::function<void(const engine::EncodePlan& plan)> on_plan;  // that a run is made of
};

/// The profile of a plain audio-and-video session.
inline void FillProfile(platform::WMEncProfile2& profile) {
    profile.SetProfileName("test");
    const auto audience = profile.AddAudience(10'000'000);
    audience->SetAudioConfig(0, 2, 44100, 64040, 16);
    audience->SetVideoCodec(0, 1);
    audience->SetVideoBitrate(0, 300'000);
    audience->SetVideoFPS(0, 100'000);
}

}  // namespace test_support
