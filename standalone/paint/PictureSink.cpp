#include "paint/PictureSink.h"

#include "core/RepKind.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace paint {

namespace {

/// Far enough outside every picture, near enough that sums of a few still are whole numbers.
constexpr double FAR_AWAY = 1 << 28;

constexpr int MOST_LINE_WIDTH = 64;

/// The first pixel whose centre is not before `position`.
int FirstPixel(double position)
{
    return static_cast<int>(std::ceil(std::clamp(position, -FAR_AWAY, FAR_AWAY) - 0.5));
}

bool AreFinite(const std::vector<float>& numbers)
{
    return std::all_of(numbers.begin(), numbers.end(),
                       [](float number) { return std::isfinite(number); });
}

/// Four points that go round an upright rectangle, in either sense and from any corner.
bool IsUprightRectangle(const std::vector<float>& p)
{
    if (p.size() != 8)
        return false;
    const bool alongX = p[1] == p[3] && p[2] == p[4] && p[5] == p[7] && p[6] == p[0];
    const bool alongY = p[0] == p[2] && p[3] == p[5] && p[4] == p[6] && p[7] == p[1];
    return alongX || alongY;
}

class Walk {
public:
    Walk(int width, int height, int lineWidth, PictureSink& sink)
        : picture_{0, 0, width, height}, lineWidth_(std::clamp(lineWidth, 1, MOST_LINE_WIDTH)),
          sink_(sink)
    {
    }

    void Run(const KUV2DBagRep& scene)
    {
        Enter(scene);
        while (!stack_.empty()) {
            const KUVRep* const rep = Next(stack_.back());
            if (rep)
                Visit(*rep);
            else
                Leave();
        }
    }

private:
    struct Level {
        const KUV2DBagRep* bag;
        const list<KUVRep>* children;
        int next;
        /// Where the bag's texts may be painted.
        PixelBox textClip;
    };

    static const KUVRep* Next(Level& level)
    {
        return level.children ? (*level.children)[level.next++] : nullptr;
    }

    void Enter(const KUV2DBagRep& bag)
    {
        const KUVVisibilityState* const visibility = bag.GetVisibilityState();
        if (!visibility || !visibility->shown || !onStack_.insert(&bag).second)
            return;
        const list<KUVRep>* const children = bag.GetChildren();
        stack_.push_back({&bag, children, 0, TextClip(children)});
        sink_.BeginBag(bag);
    }

    void Leave()
    {
        sink_.EndBag();
        onStack_.erase(stack_.back().bag);
        stack_.pop_back();
    }

    void Visit(const KUVRep& rep)
    {
        switch (core::KindOf(rep)) {
        case core::RepKind::Bag:
            Enter(static_cast<const KUV2DBagRep&>(rep));
            break;
        case core::RepKind::Polygon:
            VisitPolygon(static_cast<const KUV2DPolygonRep&>(rep));
            break;
        case core::RepKind::Image:
            VisitImage(static_cast<const KUV2DImagePixelRep&>(rep));
            break;
        case core::RepKind::Text:
            VisitText(static_cast<const KUV2DAnnotationTextRep&>(rep));
            break;
        case core::RepKind::Other:
            break;
        }
    }

    /// The pixels whose centres lie between the least and the greatest coordinates.
    PixelBox BoxAround(const std::vector<float>& points) const
    {
        auto left = static_cast<double>(points[0]);
        double right = left;
        auto bottom = static_cast<double>(points[1]);
        double top = bottom;
        for (std::size_t i = 2; i + 1 < points.size(); i += 2) {
            left = std::min(left, static_cast<double>(points[i]));
            right = std::max(right, static_cast<double>(points[i]));
            bottom = std::min(bottom, static_cast<double>(points[i + 1]));
            top = std::max(top, static_cast<double>(points[i + 1]));
        }
        return {FirstPixel(left), picture_.bottom - FirstPixel(top), FirstPixel(right),
                picture_.bottom - FirstPixel(bottom)};
    }

    bool PlaceImage(const KUV2DImagePixelRep& rep, PlacedImage& placed) const
    {
        const KUVMathPoint2Df corner = rep.GetLowerLeft();
        placed.image = rep.GetImage();
        if (!placed.image || !std::isfinite(corner.x) || !std::isfinite(corner.y))
            return false;
        int width = 0;
        int height = 0;
        placed.image->GetSize(width, height);
        const double xPixel = static_cast<double>(placed.image->GetXPixelSize());
        const double yPixel = static_cast<double>(placed.image->GetYPixelSize());
        if (!(xPixel > 0.0) || !(yPixel > 0.0))
            return false;
        const int shownWidth =
            static_cast<int>(std::clamp(std::trunc(width * xPixel), 0.0, FAR_AWAY));
        const int shownHeight =
            static_cast<int>(std::clamp(std::trunc(height * yPixel), 0.0, FAR_AWAY));
        const int left = FirstPixel(static_cast<double>(corner.x));
        const int bottom = picture_.bottom - FirstPixel(static_cast<double>(corner.y));
        placed.box = {left, bottom - shownHeight, left + shownWidth, bottom};
        placed.isUnscaled = shownWidth == width && shownHeight == height;
        placed.hasAlpha = rep.GetMode() == 0 || rep.GetAlphaMode() == 2;
        return true;
    }

    PixelBox TextClip(const list<KUVRep>* children) const
    {
        PixelBox area;
        bool hasArea = false;
        for (int i = 0; children && (*children)[i]; ++i) {
            const KUVRep& rep = *(*children)[i];
            const core::RepKind kind = core::KindOf(rep);
            if (kind == core::RepKind::Polygon) {
                const auto& points = static_cast<const KUV2DPolygonRep&>(rep).GetPoints();
                if (points.size() >= 4 && AreFinite(points)) {
                    area = Union(area, BoxAround(points));
                    hasArea = true;
                }
            } else if (kind == core::RepKind::Image) {
                PlacedImage placed;
                const auto& image = static_cast<const KUV2DImagePixelRep&>(rep);
                if (image.GetMode() == 0 && PlaceImage(image, placed)) {
                    area = Union(area, placed.box);
                    hasArea = true;
                }
            }
        }
        return hasArea ? Intersection(area, picture_) : picture_;
    }

    void VisitPolygon(const KUV2DPolygonRep& rep)
    {
        const std::vector<float>& points = rep.GetPoints();
        if (points.size() < 4 || !AreFinite(points))
            return;
        const PixelBox box = BoxAround(points);
        if (!IsUprightRectangle(points)) {
            VisitOtherPolygon(rep, points);
        } else if (rep.IsFilled()) {
            const PixelBox visible = Intersection(box, picture_);
            if (!visible.IsEmpty())
                sink_.FillBox(visible, rep.GetColor());
        } else if (!Intersection(box, picture_).IsEmpty()) {
            OutlineBox(box, rep.GetColor());
        }
    }

    void OutlineBox(const PixelBox& box, KUVColor color)
    {
        // Edges far outside only have to stay outside.
        constexpr int MARGIN = 2 * MOST_LINE_WIDTH;
        const PixelBox near = Intersection(
            box, {-MARGIN, -MARGIN, picture_.right + MARGIN, picture_.bottom + MARGIN});
        if (near.Width() > 2 * lineWidth_ && near.Height() > 2 * lineWidth_)
            sink_.OutlineBox(near, lineWidth_, color);
        else
            sink_.FillBox(Intersection(near, picture_), color);
    }

    void VisitOtherPolygon(const KUV2DPolygonRep& rep, const std::vector<float>& points)
    {
        std::vector<PixelPoint> placed;
        placed.reserve(points.size() / 2);
        for (std::size_t i = 0; i + 1 < points.size(); i += 2)
            placed.push_back({std::clamp(static_cast<double>(points[i]), -FAR_AWAY, FAR_AWAY),
                              picture_.bottom - std::clamp(static_cast<double>(points[i + 1]),
                                                           -FAR_AWAY, FAR_AWAY)});
        sink_.Polygon(placed, rep.IsFilled() != 0, rep.GetColor());
    }

    void VisitImage(const KUV2DImagePixelRep& rep)
    {
        PlacedImage placed;
        if (PlaceImage(rep, placed) && !Intersection(placed.box, picture_).IsEmpty())
            sink_.Image(placed);
    }

    void VisitText(const KUV2DAnnotationTextRep& rep)
    {
        const KUVMathPoint2Df point = rep.GetPoint();
        const PixelBox& clip = stack_.back().textClip;
        if (rep.GetText().IsEmpty() || clip.IsEmpty() || !std::isfinite(point.x) ||
            !std::isfinite(point.y) || !std::isfinite(rep.GetTextSize()) ||
            rep.GetTextSize() <= 0.0f)
            return;
        sink_.Text({&rep.GetText(), std::clamp(static_cast<double>(point.x), -FAR_AWAY, FAR_AWAY),
                    picture_.bottom - std::clamp(static_cast<double>(point.y), -FAR_AWAY, FAR_AWAY),
                    rep.GetAnchor(), rep.GetTextSize(), rep.GetColor(), clip});
    }

    PixelBox picture_;
    int lineWidth_;
    PictureSink& sink_;
    std::vector<Level> stack_;
    std::unordered_set<const KUV2DBagRep*> onStack_;
};

}  // namespace

PixelBox Intersection(const PixelBox& a, const PixelBox& b)
{
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

PixelBox Union(const PixelBox& a, const PixelBox& b)
{
    if (a.IsEmpty())
        return b;
    if (b.IsEmpty())
        return a;
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
}

void WalkPicture(const KUV2DBagRep& scene, int width, int height, int lineWidth, PictureSink& sink)
{
    Walk(width, height, lineWidth, sink).Run(scene);
}

}  // namespace paint
