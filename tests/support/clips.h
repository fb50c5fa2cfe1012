// Clips made by the ffmpeg command when a test asks for them, and what is heard and seen in a file.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "support/commands.h"

namespace clips {

/// A folder of its own, gone with the object.
struct Folder : test_support::TempFolder {
    std::string Path(const std::string& name) const { return *this / name; }
};

/// The command's output, both streams.
std::string OutputOf(const std::string& command);

using test_support::DecodeMessages;
using test_support::Ffmpeg;

struct SeenFrame {
    double time = 0;  // seconds
    int luma = 0;     // mean
};

struct Contents {
    int width = 0;
    int height = 0;
    std::vector<SeenFrame> frames;
    std::vector<double> key_times;
    int sampling_rate = 0;
    std::vector<float> audio;  // first channel, from time 0
    std::string video_codec, audio_codec;
    double duration = 0;  // as the container says it
};
/// Decodes all of it.
Contents Decode(const std::string& file);

/// Decibels between frames of the same number, in these pixels, after `filter` on the reference;
/// infinite where they are the same.
double Psnr(const std::string& file, const std::string& reference, const std::string& filter,
            const std::string& pixels);

/// Times at which dark frames turn bright, and at which silence is broken.
std::vector<double> Flashes(const Contents& contents);
std::vector<double> Clicks(const Contents& contents);

/// A suite that encodes one clip, made of `Suite::kSource` before its first test.
template <typename Suite>
class WithSource : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        folder_ = std::make_unique<Folder>();
        source_ = Ffmpeg(Suite::kSource, folder_->Path("source.avi"));
    }
    static void TearDownTestSuite() { folder_.reset(); }

    inline static std::unique_ptr<Folder> folder_;
    inline static std::string source_;
};

}  // namespace clips
