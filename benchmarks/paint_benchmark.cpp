// Painting and measuring on fixed inputs. The label font is the system's sans-serif font.

#include "KUV2D.h"
#include "TreeShapes.h"
#include "VisTreeMapLayout.h"
#include "VisTreeSpaceFillingView.h"
#include "core/MeasuringFont.h"
#include "paint/PaintSession.h"
#include "paint/Picture.h"
#include "paint/PngWriter.h"
#include "private/Reference.h"

#include <benchmark/benchmark.h>

#include <QBuffer>
#include <QImage>

#include <chrono>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

struct Releaser {
    void operator()(KUVBaseUnknown* object) const { object->Release(); }
};
using HeldBag = std::unique_ptr<KUV2DBagRep, Releaser>;
using HeldFont = std::unique_ptr<core::MeasuringFont, Releaser>;

void StartQt() { static const paint::PaintSession session; }

HeldFont MakeFont()
{
    StartQt();
    std::string remark;
    return HeldFont(paint::MakeFont("", remark));
}

/// `count` boxes in rows of 100, one bag each as views have them, with a label or without.
HeldBag MakeScene(int count, bool labels)
{
    StartQt();
    HeldBag scene(KUV2DBagRep::CreateRep());
    constexpr int PITCH_X = 40;
    const int rowCount = (count + 99) / 100;
    const float pitchY = 3000.0f / static_cast<float>(rowCount);
    for (int i = 0; i < count; ++i) {
        const auto x = static_cast<float>(i % 100 * PITCH_X);
        const int row = i / 100;
        const float y = static_cast<float>(row) * pitchY;
        const float top = y + pitchY * 0.9f;
        const float points[] = {x, y, x + 38, y, x + 38, top, x, top};
        const HeldBag node(KUV2DBagRep::CreateRep());
        std::unique_ptr<KUV2DPolygonRep, Releaser> box(KUV2DPolygonRep::CreateRep(points, 4, 1));
        box->SetColor(static_cast<unsigned char>(i * 7), 125, static_cast<unsigned char>(i / 100),
                      255);
        node->AddChild(box.get());
        if (labels) {
            const float anchor[] = {x, top};
            const std::string text = "P" + std::to_string(i);
            std::unique_ptr<KUV2DAnnotationTextRep, Releaser> label(
                KUV2DAnnotationTextRep::CreateRep(anchor, KUVUnicodeString(text.c_str()),
                                                  KUVAnchorPoint_UpperLeft, 14.0f, 0, nullptr,
                                                  nullptr));
            label->SetColor(255, 255, 255, 255);
            node->AddChild(label.get());
        }
        scene->AddChild(node.get());
    }
    return scene;
}

std::string Paint(const KUV2DBagRep& scene, paint::PictureFormat format)
{
    paint::PictureOptions options;
    options.width = 4000;
    options.height = 3000;
    std::string bytes;
    const std::string problem = paint::PaintPicture(scene, options, format, bytes);
    return problem.empty() ? bytes : std::string();
}

void PaintScene(benchmark::State& state, int count, bool labels, paint::PictureFormat format)
{
    const HeldBag scene = MakeScene(count, labels);
    std::size_t size = 0;
    while (state.KeepRunning())
        size = Paint(*scene, format).size();
    state.counters["bytes"] = static_cast<double>(size);
    state.counters["boxes/s"] = benchmark::Counter(static_cast<double>(count),
                                                   benchmark::Counter::kIsIterationInvariantRate);
}

/// A tree map of 100,000 nodes, all of them visible with their labels, as SVG. Process time: the
/// goal is half a second.
void PaintTreeMapAsSvg(benchmark::State& state, shapes::Shape shape)
{
    using Map = VisReference<VisTreeMapLayout>;
    constexpr std::size_t NODES = 100000;
    const HeldFont font = MakeFont();
    const auto root = VisReference<VisDataTree>::Adopt(shapes::MakeTree(shape, NODES));
    const auto bag = VisReference<KUV2DBagRep>::Adopt(KUV2DBagRep::CreateRep());
    const Map map = Map::Adopt(VisTreeMapLayout::CreateLayout(nullptr, root.Get(), bag.Get()));
    auto& cache = static_cast<VisTreeMapLayout::VisTreeMapLayoutCache&>(*root->GetCache());
    const KUVMathPoint2Df size = cache.ComputeMinimumExpandedSize(VisTreeMap_Stacked);
    map->Draw({0.0f, 0.0f}, size, font.get(), 1.0f);
    paint::PictureOptions options;
    options.width = static_cast<int>(size.x);
    options.height = static_cast<int>(size.y);
    std::string bytes;
    while (state.KeepRunning()) {
        bytes.clear();
        const std::string problem =
            paint::PaintPicture(*bag.Get(), options, paint::PictureFormat::Svg, bytes);
        if (!problem.empty())
            state.SkipWithError(problem.c_str());
    }
    state.counters["bytes"] = static_cast<double>(bytes.size());
    state.counters["views"] = bag->GetChildren()->Count();
    map->SetTreeRoot(nullptr);
}

/// 4000 x 3000 pixels of a picture with 10,000 labelled boxes, through our writer; `ratio` is the
/// time divided by that of Qt's writer at its default compression, measured in the same run.
void EncodePng(benchmark::State& state)
{
    const std::string painted = Paint(*MakeScene(10000, true), paint::PictureFormat::Png);
    const QImage picture = QImage::fromData(reinterpret_cast<const uchar*>(painted.data()),
                                            static_cast<int>(painted.size()))
                               .convertToFormat(QImage::Format_RGB32);
    using Clock = std::chrono::steady_clock;
    const auto secondsSince = [](Clock::time_point start) {
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    constexpr int REPEATS = 3;
    QByteArray byQt;
    double qtSeconds = 0.0;
    for (int i = 0; i < REPEATS; ++i) {
        byQt.clear();
        QBuffer buffer(&byQt);
        buffer.open(QIODevice::WriteOnly);
        const auto start = Clock::now();
        picture.save(&buffer, "png");
        qtSeconds += secondsSince(start) / REPEATS;
    }
    std::size_t size = 0;
    const auto start = Clock::now();
    while (state.KeepRunning()) {
        std::string file;
        paint::PngWriter writer(file, picture.width(), picture.height(),
                                paint::PngWriter::Channels::Rgb);
        writer.Add(picture.height(), [&picture](int y, unsigned char* row) {
            const auto* const line = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
            for (int x = 0; x < picture.width(); ++x, row += 3) {
                row[0] = static_cast<unsigned char>(qRed(line[x]));
                row[1] = static_cast<unsigned char>(qGreen(line[x]));
                row[2] = static_cast<unsigned char>(qBlue(line[x]));
            }
        });
        size = file.size();
    }
    state.counters["bytes"] = static_cast<double>(size);
    state.counters["bytesByQt"] = static_cast<double>(byQt.size());
    state.counters["ratio"] =
        secondsSince(start) / static_cast<double>(state.iterations()) / qtSeconds;
}

/// Measuring a label of 40 characters that loses one after the other, as cropping does.
void MeasureShrinkingLabel(benchmark::State& state)
{
    const HeldFont font = MakeFont();
    const int index = font->GetFontIndex(14.0f);
    std::vector<KUVUnicodeString> texts;
    std::string label = "Bracket M6 x 20, housing left, mirrored!";
    for (texts.emplace_back(label.c_str()); !label.empty(); label.pop_back())
        texts.emplace_back((label + "...").c_str());
    std::int64_t measured = 0;
    while (state.KeepRunning()) {
        for (const KUVUnicodeString& text : texts) {
            int width = 0;
            font->GetStringSize(text, &width, nullptr, nullptr, index);
            benchmark::DoNotOptimize(width);
        }
        measured += static_cast<std::int64_t>(texts.size());
    }
    state.SetItemsProcessed(measured);
}

/// Labels of 10 to 40 characters cropped to boxes of 32 to 300 units.
void CropLabels(benchmark::State& state)
{
    const HeldFont font = MakeFont();
    std::mt19937 random(1);
    std::uniform_int_distribution<int> length(10, 40);
    std::uniform_int_distribution<int> letter(0, 63);
    std::uniform_real_distribution<float> width(32.0f, 300.0f);
    constexpr char LETTERS[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 _";
    std::vector<std::pair<KUVUnicodeString, float>> labels;
    for (int i = 0; i < 10000; ++i) {
        std::string text;
        for (int rest = length(random); rest > 0; --rest)
            text += LETTERS[letter(random)];
        labels.emplace_back(KUVUnicodeString(text.c_str()), width(random));
    }
    while (state.KeepRunning()) {
        for (const auto& [label, space] : labels) {
            KUVUnicodeString shown;
            unsigned char cropped = 0;
            VisTreeSpaceFillingView::ComputeCroppedLabel(label, space, font.get(), 1.0f, shown,
                                                         cropped);
            benchmark::DoNotOptimize(cropped);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(labels.size()));
}

using paint::PictureFormat;

BENCHMARK(EncodePng)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK_CAPTURE(PaintScene, Boxes100kPng, 100000, false, PictureFormat::Png)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(PaintScene, Boxes100kSvg, 100000, false, PictureFormat::Svg)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(PaintScene, Boxes100kPdf, 100000, false, PictureFormat::Pdf)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(PaintScene, Labels100kSvg, 100000, true, PictureFormat::Svg)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();
BENCHMARK_CAPTURE(PaintTreeMapAsSvg, Balanced100k, shapes::Shape::Balanced)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();
BENCHMARK_CAPTURE(PaintTreeMapAsSvg, Assembly100k, shapes::Shape::Assembly)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();
BENCHMARK_CAPTURE(PaintScene, Labels10kPng, 10000, true, PictureFormat::Png)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(PaintScene, Labels10kSvg, 10000, true, PictureFormat::Svg)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(PaintScene, Labels10kPdf, 10000, true, PictureFormat::Pdf)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(MeasureShrinkingLabel);
BENCHMARK(CropLabels)->Unit(benchmark::kMillisecond);

}  // namespace
