#ifndef module_ViewFixture_h
#define module_ViewFixture_h

#include "VisTreeSpaceFillingLayoutCachedTextures.h"
#include "VisTreeSpaceFillingView.h"

#include "module/ViewReading.h"

#include "core/ImageBackend.h"

#include "support/FixedWidthFont.h"

#include "KUV2D.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <string>

namespace viewtest {

/// Gives every icon file the same size.
class IconBackend : public core::ImageBackend {
public:
    IconBackend(int width, int height) : width_(width), height_(height) {}
    KUVPixelImage* Load(const std::string& /*path*/) override
    {
        const auto bytes = static_cast<std::size_t>(width_ * height_ * 4);
        unsigned char* const pixels = KUVAllocatePixels(bytes);
        if (!pixels)
            return nullptr;
        std::memset(pixels, 7, bytes);
        auto* const image = new (std::nothrow)
            KUVPixelImage(width_, height_, KUVPixelFormat_RGBA8, pixels, /*deallocate=*/1);
        if (!image)
            KUVFreePixels(pixels);
        return image;
    }

private:
    int width_;
    int height_;
};

using View = VisTreeSpaceFillingView;
using viewreading::Bytes;

constexpr unsigned int DARK = 0x007DA3FFU;
constexpr unsigned int BRIGHT = 0xF2F5F7FFU;
constexpr Bytes ORANGE = {255, 126, 30, 255};

/// A view with what it borrows, and what a call of `Init` needs.
class ViewTest : public testing::Test {
protected:
    ~ViewTest() override
    {
        core::SetImageBackend(nullptr);
        font->Release();
    }

    void Init(View& built)
    {
        built.Init(isLeafObject, label, position, size, colour, font, flatColour, centredLabel,
                   iconName, iconPosition, scale);
    }
    void Init() { Init(view); }

    void UseIcon(int width, int height, View::Position place)
    {
        core::SetImageBackend(std::make_shared<IconBackend>(width, height));
        iconName = "I_VisPart.png";
        iconPosition = place;
    }

    const KUV2DBagRep* Bag() const { return view.GetBagRep(); }
    const KUV2DAnnotationTextRep* Label() const
    {
        return viewreading::Find<KUV2DAnnotationTextRep>(Bag(), "label");
    }
    const KUV2DImagePixelRep* Icon() const
    {
        return viewreading::Find<KUV2DImagePixelRep>(Bag(), "icon");
    }

    VisTreeSpaceFillingLayoutCachedTextures textures;
    View view{&textures};
    KUVCharacterFont* font = support::MakeFixedWidthFont();

    unsigned char isLeafObject = 0;
    KUVUnicodeString label = "Pump";
    KUVMathPoint2Df position{10.0f, 20.0f};
    KUVMathPoint2Df size{100.0f, 50.0f};
    unsigned int colour = DARK;
    unsigned char flatColour = 1;
    unsigned char centredLabel = 0;
    KUVUnicodeString iconName;
    View::Position iconPosition = View::Position_IconRight;
    float scale = 1.0f;
};

inline void ExpectPoint(const KUVMathPoint2Df& point, float x, float y)
{
    EXPECT_EQ(point.x, x);
    EXPECT_EQ(point.y, y);
}

}  // namespace viewtest

#endif
