// All that is known of the picture in hand: its header, its samples and its macroblocks.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "codecs/wmv9/bitplane.h"
#include "codecs/wmv9/encoder.h"
#include "codecs/wmv9/frame.h"
#include "codecs/wmv9/kernels.h"
#include "codecs/wmv9/macroblock.h"
#include "codecs/wmv9/quantiser_map.h"
#include "codecs/wmv9/sequence_header.h"

namespace codecs::wmv9 {

struct LikelyMotion;

/// Units and filters of vectors; with Mixed a macroblock may have 4MV (MVMODE).
enum class VectorMode : std::uint8_t { Quarter, Half, HalfBilinear, Mixed };

/// Intensity compensation: how the samples of the reference are mapped before use (SMPTE ST 421,
/// 8.3.8).
struct Intensity {
    int scale = 32;  // LUMSCALE, 0 to 63; 32 and a shift of 0 map nothing
    int shift = 0;   // LUMSHIFT, 0 to 63
    bool operator==(const Intensity&) const = default;
};

struct PictureHeader {
    PictureKind kind = PictureKind::kI;     // PTYPE
    int counter = 0;                        // FRMCNT
    int quantiser = 8;                      // PQINDEX, 1 to 31; PQUANT is the same
    bool half_step = false;                 // HALFQP: half a quantiser more; up to quantiser 8
    bool varying = false;                   // DQUANTFRM (VOPDQUANT): macroblocks name theirs
    int vector_range = 0;                   // MVRANGE, 0 to 3
    VectorMode mode = VectorMode::Quarter;  // MVMODE, MVMODE2
    std::optional<Intensity> intensity;
    std::optional<Shape> shape;  // TTMBF, TTFRM: one transform for the whole picture
    int rounding = 0;            // RNDCTRL, 0 or 1; not in the stream
    int b_number = 1;            // BFRACTION, of a B picture: from 1 on ...
    int b_pictures = 1;          // ... among so many consecutive ones

    // Chosen when the macroblocks are known.
    PlaneCoding four_mv_plane;  // MVTYPEMB
    PlaneCoding skip_plane;     // SKIPMB
    PlaneCoding direct_plane;   // DIRECTMB
    int vector_table = 0;       // MVTAB
    int pattern_table = 0;      // CBPTAB
    int ac_table = 0;           // TRANSACFRM; of an I picture: of chroma
    int luma_ac_table = 0;      // TRANSACFRM2, of an I picture
    int dc_table = 0;           // TRANSDCTAB

    bool IsI() const { return kind == PictureKind::kI; }
    bool IsB() const { return kind == PictureKind::kB; }
    bool HalfVectors() const {
        return mode == VectorMode::Half || mode == VectorMode::HalfBilinear;
    }
    bool HighRate() const { return quantiser <= 8; }
    /// Of the tables of transform types.
    int TransformClass() const { return quantiser <= 4 ? 0 : quantiser <= 12 ? 1 : 2; }
    /// Distance of reconstructed levels of a macroblock.
    int Step(int macroblock_quantiser) const {
        return 2 * macroblock_quantiser + (half_step && !varying ? 1 : 0);
    }
};

/// Plain references to what belongs to the encoder.
struct Picture {
    const SequenceHeader& sequence;
    PictureHeader header;
    const Kernels& kernels;
    const Frame& source;
    Frame& result;
    MacroblockGrid& grid;
    const Frame* past = nullptr;               // reference, mapped where the header says so
    const Frame* future = nullptr;             // of a B picture
    const QuantiserMap* quantisers = nullptr;  // where they vary
    int beyond = 0;  // quantiser that decisions are made for, where none in the header is so coarse
    const LikelyMotion* likely = nullptr;    // null = none is known
    const MacroblockGrid* anchor = nullptr;  // macroblocks of `future`; null = an I picture

    int Width() const { return grid.Width(); }
    int Height() const { return grid.Height(); }
    /// Samples of intra blocks are coded as differences from 128, and smoothed where they meet.
    bool Overlaps() const { return sequence.overlap && header.quantiser >= 9; }
};

}  // namespace codecs::wmv9
