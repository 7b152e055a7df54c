// The icon: the bitmap chosen by width, the built-in images, and DrawIcon painting a host's surface.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <vector>

#include "driver/ExtModel.h"
#include "driver/IconSurface.h"

namespace rivulet {
namespace {

constexpr unsigned char kSentinel = 0x5A;
constexpr HostWindow kWindow = 0x1234;

int Channel(std::uint32_t pixel, int shift) {
    return static_cast<int>((pixel >> shift) & 0xFF);
}

bool AllSentinel(const unsigned char* from, const unsigned char* to) {
    return std::all_of(from, to, [](unsigned char b) { return b == kSentinel; });
}

// A surface over sentinel bytes, with a guard after the last row.
struct Canvas {
    std::vector<unsigned char> bytes;
    tIconSurface surface{};
    Canvas(std::int32_t width, std::int32_t height, std::int32_t stride = 0) {
        if (stride == 0) stride = 4 * width;
        bytes.assign(static_cast<std::size_t>(stride) * height + 64, kSentinel);
        surface = {sizeof(tIconSurface), width, height, stride,
                   reinterpret_cast<std::uint32_t*>(bytes.data())};
    }
    std::uint32_t At(int x, int y) const {
        std::uint32_t pixel;
        std::memcpy(&pixel, bytes.data() + y * surface.iStride + 4 * x, 4);
        return pixel;
    }
};

TEST(IconChoice, TheWindowWidthPicksTheBitmap) {
    const std::pair<std::int32_t, std::int32_t> cases[] = {
        {1, 1081},  {16, 1081}, {17, 1001},  {32, 1001},  {33, 1083},  {48, 1083},  {49, 1084},
        {64, 1084}, {65, 1085}, {128, 1085}, {129, 1086}, {300, 1086}, {4096, 1086}};
    for (const auto& [width, id] : cases) EXPECT_EQ(IconBitmapForWidth(width), id) << width;
}

TEST(IconBitmaps, EachDecodesAtItsSizeAsADropletOverRock) {
    for (const auto& [id, size] :
         {std::pair{1081, 16}, {1001, 32}, {1083, 48}, {1084, 64}, {1085, 128}, {1086, 256}}) {
        const IconBitmap* bitmap = FindIconBitmap(id);
        ASSERT_NE(bitmap, nullptr) << id;
        ASSERT_TRUE(bitmap->width == size && bitmap->height == size) << id;
        const std::uint32_t centre = bitmap->pixels[size / 2 * size + size / 2];
        const std::uint32_t bottom = bitmap->pixels[(size - 1) * size + size / 2];
        EXPECT_GT(Channel(centre, 0), Channel(centre, 16) + 60) << id;  // blue on top, brown below
        EXPECT_GT(Channel(bottom, 16), Channel(bottom, 0) + 40) << id;
        EXPECT_EQ(Channel(centre, 24), 255) << id;
    }
    EXPECT_EQ(FindIconBitmap(1082), nullptr);
}

TEST(DrawIcon, StretchesTheChosenBitmapOverTheSurfaceInsideAFrame) {
    CExtModel model;
    const std::pair<int, int> sizes[] = {{16, 16}, {17, 17}, {32, 32},   {33, 20},   {48, 48},   {49, 49},
                                         {64, 64}, {65, 90}, {128, 128}, {129, 129}, {256, 256}, {300, 120}};
    for (const auto& [w, h] : sizes) {
        Canvas canvas(w, h);
        ASSERT_EQ(model.DrawIcon(kWindow, &canvas.surface), 1);
        const IconBitmap& bitmap = *FindIconBitmap(IconBitmapForWidth(w));
        const bool ownSize = bitmap.width == w && bitmap.height == h;
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                const std::uint32_t pixel = canvas.At(x, y);
                if (x == 0 || y == 0 || x == w - 1 || y == h - 1) {
                    ASSERT_EQ(pixel, kIconFrameColour) << w << "x" << h << " at " << x << "," << y;
                } else {
                    // Unchanged at the bitmap's own size, else at least painted opaque.
                    ASSERT_EQ(pixel, ownSize ? bitmap.pixels[y * w + x] : pixel | 0xFF000000u)
                        << w << "x" << h << " at " << x << "," << y;
                }
            }
        }
        const std::uint32_t centre = bitmap.pixels[bitmap.height / 2 * bitmap.width + bitmap.width / 2];
        for (int shift : {0, 8, 16}) {
            EXPECT_NEAR(Channel(canvas.At(w / 2, h / 2), shift), Channel(centre, shift), 32) << w;
        }
        const unsigned char* end = canvas.bytes.data() + canvas.bytes.size();
        EXPECT_TRUE(AllSentinel(end - 64, end)) << w;
    }
}

TEST(DrawIcon, HalvingTheHeightAveragesEachPairOfRows) {
    CExtModel model;
    Canvas canvas(128, 64);
    ASSERT_EQ(model.DrawIcon(kWindow, &canvas.surface), 1);
    const IconBitmap& bitmap = *FindIconBitmap(1085);
    for (int y = 1; y < 63; ++y) {
        for (int x = 1; x < 127; ++x) {
            for (int shift : {0, 8, 16}) {
                const int sum = Channel(bitmap.pixels[2 * y * 128 + x], shift) +
                                Channel(bitmap.pixels[(2 * y + 1) * 128 + x], shift);
                ASSERT_NEAR(Channel(canvas.At(x, y), shift) * 2, sum, 2) << x << "," << y;
            }
        }
    }
}

TEST(DrawIcon, NullPointersAndUnpaintableSurfacesAnswerOneAndDrawNothing) {
    const std::function<void(tIconSurface&)> spoilers[] = {
        [](tIconSurface& s) { s.iSize = sizeof(tIconSurface) - 1; },
        [](tIconSurface& s) { s.iWidth = 0; },
        [](tIconSurface& s) { s.iWidth = 4097; },
        [](tIconSurface& s) { s.iHeight = 0; },
        [](tIconSurface& s) { s.iHeight = 4097; },
        [](tIconSurface& s) { s.iStride = 4 * s.iWidth - 1; },
        [](tIconSurface& s) { s.pdwPixels = nullptr; },
    };
    CExtModel model;
    Canvas canvas(40, 30);
    EXPECT_EQ(model.DrawIcon(kWindow, nullptr), 1);
    EXPECT_EQ(model.DrawIcon(0, &canvas.surface), 1);
    for (std::size_t i = 0; i < std::size(spoilers); ++i) {
        tIconSurface surface = canvas.surface;
        spoilers[i](surface);
        EXPECT_EQ(model.DrawIcon(kWindow, &surface), 1) << i;
    }
    EXPECT_TRUE(AllSentinel(canvas.bytes.data(), canvas.bytes.data() + canvas.bytes.size()));
}

TEST(DrawIcon, LeavesTheBytesPastEachRowAlone) {
    CExtModel model;
    Canvas canvas(20, 10, 4 * 20 + 13);  // not even a whole number of pixels
    canvas.surface.iSize = 64;           // a longer record from a newer host
    ASSERT_EQ(model.DrawIcon(kWindow, &canvas.surface), 1);
    for (int y = 0; y < 10; ++y) {
        EXPECT_TRUE(canvas.At(0, y) == kIconFrameColour && canvas.At(19, y) == kIconFrameColour) << y;
        const unsigned char* padding = canvas.bytes.data() + y * canvas.surface.iStride + 80;
        EXPECT_TRUE(AllSentinel(padding, padding + 13)) << y;
    }
    EXPECT_EQ(Channel(canvas.At(10, 5), 24), 255);
}

}  // namespace
}  // namespace rivulet
