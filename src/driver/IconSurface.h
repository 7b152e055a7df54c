// The driver's icon: the bitmaps built into the plug-in, the choice among them by the width the host draws
// at, and the painting of one into a host's pixel surface.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "driver/ExtRecords.h"

namespace rivulet {

// The colour of the one-pixel frame around a painted icon: the host's first system colour.
inline constexpr std::uint32_t kIconFrameColour = 0xFFC8C8C8;
inline constexpr std::int32_t kIconSurfaceMaxSide = 4096;

// A PNG file's bytes, built into the plug-in under its bitmap id.
struct EmbeddedPng {
    std::int32_t iBitmapId;
    const unsigned char* pBytes;
    std::size_t uLength;
};
// Every built-in icon, in no particular order (generated from icons/icon-<id>.png at build time).
extern const EmbeddedPng kEmbeddedIcons[];
extern const std::size_t kEmbeddedIconCount;

// A decoded bitmap: 0xAARRGGBB pixels, rows top to bottom, no padding.
struct IconBitmap {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<std::uint32_t> pixels;
};

// The bitmap id for a window `width` pixels wide: 1081, 1001, 1083, 1084, 1085 or 1086, larger from 17, 33,
// 49, 65 and 129 pixels on.
std::int32_t IconBitmapForWidth(std::int32_t width);

// The built-in bitmap `id`, decoded on first use and kept; null for an unknown id or an undecodable image.
// Safe to call from any thread.
const IconBitmap* FindIconBitmap(std::int32_t id);

// Whether the host's surface can be painted: a record at least as large as tIconSurface, a width and height
// of 1 to kIconSurfaceMaxSide, rows at least 4 * width bytes apart and pixels present.
bool IsPaintableSurface(const tIconSurface& surface);

// Stretches `bitmap` over the whole of a paintable `surface` and frames it. Padding bytes past each row's
// 4 * width are left as they are.
void PaintIcon(const IconBitmap& bitmap, const tIconSurface& surface);

}  // namespace rivulet
