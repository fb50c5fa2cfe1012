// A short clip that every encoder is given.
#pragma once

#include "support/clips.h"
#include "unit/engine/pipeline/session.h"

constexpr int kSeconds = 6;
constexpr int kFrames = 25 * kSeconds;

/// A moving test pattern with enough detail that no rate below is too much for it, and a tone.
class EncodeTable : public clips::WithSource<EncodeTable> {
  public:
    static constexpr char kSource[] =
        "-f lavfi -i testsrc2=s=320x240:r=25,noise=alls=12:allf=t -f lavfi -i sine=440:r=44100 "
        "-t 6 -c:v mpeg4 -q:v 2 -c:a pcm_s16le";
};
