// The icon: the built-in PNG images decoded once with libpng, the bitmap chosen by the window's width and
// stretched over the host's pixel surface, then framed.
#include <png.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <map>
#include <utility>

#include "driver/ExtModel.h"
#include "driver/IconSurface.h"

namespace rivulet {

namespace {

// 0xAARRGGBB as it lies in memory.
constexpr std::uint32_t kNativeArgbFormat =
    std::endian::native == std::endian::little ? PNG_FORMAT_BGRA : PNG_FORMAT_ARGB;

// Releases what libpng holds for an image; harmless once libpng has released it itself.
struct PngImageGuard {
    png_image& image;
    ~PngImageGuard() { png_image_free(&image); }
};

bool Decode(const EmbeddedPng& png, IconBitmap& bitmap) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    PngImageGuard guard{image};
    if (png_image_begin_read_from_memory(&image, png.pBytes, png.uLength) == 0) return false;
    if (image.width == 0 || image.height == 0 || image.width > kIconSurfaceMaxSide ||
        image.height > kIconSurfaceMaxSide) {
        return false;
    }
    image.format = kNativeArgbFormat;
    bitmap.width = static_cast<std::int32_t>(image.width);
    bitmap.height = static_cast<std::int32_t>(image.height);
    bitmap.pixels.resize(static_cast<std::size_t>(bitmap.width) * static_cast<std::size_t>(bitmap.height));
    return png_image_finish_read(&image, nullptr, bitmap.pixels.data(), 0, nullptr) != 0;
}

const std::map<std::int32_t, IconBitmap>& DecodedIcons() {
    static const std::map<std::int32_t, IconBitmap> icons = [] {
        std::map<std::int32_t, IconBitmap> decoded;
        for (std::size_t i = 0; i < kEmbeddedIconCount; ++i) {
            IconBitmap bitmap;
            if (Decode(kEmbeddedIcons[i], bitmap))
                decoded.emplace(kEmbeddedIcons[i].iBitmapId, std::move(bitmap));
        }
        return decoded;
    }();
    return icons;
}

// The source pixels one destination pixel draws on along an axis, from `first` on, with their weights.
struct AxisSpan {
    std::int32_t first = 0;
    std::vector<float> weights;
};

// Along an axis of `from` source pixels drawn as `to`: each destination pixel averages the source pixels it
// covers when shrinking, and interpolates between the two nearest pixel centres when enlarging. The same
// size maps each pixel onto itself.
std::vector<AxisSpan> AxisSpans(std::int32_t from, std::int32_t to) {
    std::vector<AxisSpan> spans(static_cast<std::size_t>(to));
    const double scale = static_cast<double>(from) / to;
    for (std::int32_t i = 0; i < to; ++i) {
        AxisSpan& span = spans[static_cast<std::size_t>(i)];
        if (to < from) {
            const double lo = i * scale;
            const double hi = std::min<double>(from, (i + 1) * scale);
            span.first = static_cast<std::int32_t>(lo);
            for (std::int32_t s = span.first; s < hi; ++s) {
                span.weights.push_back(
                    static_cast<float>((std::min<double>(s + 1, hi) - std::max<double>(s, lo)) / scale));
            }
            continue;
        }
        const double centre = std::clamp((i + 0.5) * scale - 0.5, 0.0, from - 1.0);
        span.first = static_cast<std::int32_t>(centre);
        const auto fraction = static_cast<float>(centre - span.first);
        span.weights.push_back(1.0f - fraction);
        if (fraction > 0.0f) span.weights.push_back(fraction);
    }
    return spans;
}

std::uint32_t Channel(std::uint32_t pixel, int shift) {
    return (pixel >> shift) & 0xFFu;
}

// The weighted average of the bitmap's pixels under one destination pixel, colours weighted by their alpha.
std::uint32_t Sample(const IconBitmap& bitmap, const AxisSpan& across, const AxisSpan& down) {
    float alpha = 0.0f, red = 0.0f, green = 0.0f, blue = 0.0f;
    for (std::size_t dy = 0; dy < down.weights.size(); ++dy) {
        const std::uint32_t* row =
            bitmap.pixels.data() + static_cast<std::size_t>(down.first + static_cast<std::int32_t>(dy)) *
                                       static_cast<std::size_t>(bitmap.width);
        for (std::size_t dx = 0; dx < across.weights.size(); ++dx) {
            const std::uint32_t pixel = row[static_cast<std::size_t>(across.first) + dx];
            const float weight =
                down.weights[dy] * across.weights[dx] * static_cast<float>(Channel(pixel, 24));
            alpha += weight;
            red += weight * static_cast<float>(Channel(pixel, 16));
            green += weight * static_cast<float>(Channel(pixel, 8));
            blue += weight * static_cast<float>(Channel(pixel, 0));
        }
    }
    if (alpha <= 0.0f) return 0;
    const auto byte = [](float value) {
        return static_cast<std::uint32_t>(std::clamp(std::lround(value), 0L, 255L));
    };
    return byte(alpha) << 24 | byte(red / alpha) << 16 | byte(green / alpha) << 8 | byte(blue / alpha);
}

}  // namespace

std::int32_t IconBitmapForWidth(std::int32_t width) {
    if (width >= 129) return 1086;
    if (width >= 65) return 1085;
    if (width >= 49) return 1084;
    if (width >= 33) return 1083;
    if (width >= 17) return 1001;
    return 1081;
}

const IconBitmap* FindIconBitmap(std::int32_t id) {
    const auto& icons = DecodedIcons();
    const auto it = icons.find(id);
    return it == icons.end() ? nullptr : &it->second;
}

bool IsPaintableSurface(const tIconSurface& surface) {
    // The size comes first: a shorter record has none of the later fields.
    if (surface.iSize < static_cast<std::int32_t>(sizeof(tIconSurface))) return false;
    if (surface.iWidth < 1 || surface.iWidth > kIconSurfaceMaxSide) return false;
    if (surface.iHeight < 1 || surface.iHeight > kIconSurfaceMaxSide) return false;
    return surface.iStride >= 4 * surface.iWidth && surface.pdwPixels != nullptr;
}

void PaintIcon(const IconBitmap& bitmap, const tIconSurface& surface) {
    const std::vector<AxisSpan> across = AxisSpans(bitmap.width, surface.iWidth);
    const std::vector<AxisSpan> down = AxisSpans(bitmap.height, surface.iHeight);
    // Rows are addressed in bytes: the host's stride need not be a whole number of pixels.
    auto* const base = reinterpret_cast<unsigned char*>(surface.pdwPixels);
    for (std::int32_t y = 0; y < surface.iHeight; ++y) {
        unsigned char* const row = base + static_cast<std::ptrdiff_t>(y) * surface.iStride;
        const bool edgeRow = y == 0 || y == surface.iHeight - 1;
        for (std::int32_t x = 0; x < surface.iWidth; ++x) {
            const bool edge = edgeRow || x == 0 || x == surface.iWidth - 1;
            const std::uint32_t pixel =
                edge ? kIconFrameColour
                     : Sample(bitmap, across[static_cast<std::size_t>(x)], down[static_cast<std::size_t>(y)]);
            std::memcpy(row + static_cast<std::ptrdiff_t>(x) * 4, &pixel, sizeof(pixel));
        }
    }
}

std::int32_t CExtModel::DrawIcon(HostWindow window, void* surface) {
    // On Linux the surface describes the host's window: its width picks the bitmap. The answer is always 1.
    if (window == 0 || surface == nullptr) return 1;
    try {
        const auto& target = *static_cast<const tIconSurface*>(surface);
        if (!IsPaintableSurface(target)) return 1;
        if (const IconBitmap* bitmap = FindIconBitmap(IconBitmapForWidth(target.iWidth))) {
            PaintIcon(*bitmap, target);
        }
    } catch (...) {
        // Nothing escapes to the host; a surface left part painted is repainted on the next call.
    }
    return 1;
}

}  // namespace rivulet
