#include "import/Tessellator.h"

#include "import_files.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepTools.hxx>

#include <atomic>
#include <limits>

namespace {

using namespace kuvimport;
using importtest::Folder;
using importtest::Import;
using importtest::ProductNamed;

std::vector<std::vector<std::uint32_t>> TrianglesOf(const ImportOptions& options)
{
    const ImportResult result = Import(importtest::Example(), options);
    std::vector<std::vector<std::uint32_t>> triangles;
    if (result.model) {
        for (const PartGeometry& geometry : result.model->geometries)
            triangles.push_back(geometry.trianglesPerFace);
    }
    EXPECT_FALSE(triangles.empty()) << result.error;
    return triangles;
}

std::uint64_t TriangleCount(double factor)
{
    ImportOptions options;
    options.linearDeflection *= factor;
    options.angularDeflection *= factor;
    const ImportResult result = Import(importtest::Example(), options);
    return result.model ? result.model->Count().triangles : 0;
}

TEST(Tessellator, EveryFaceGetsTheSameTrianglesOnAnyNumberOfThreads)
{
    ImportOptions options;
    options.threads = 1;
    const auto alone = TrianglesOf(options);
    for (const unsigned threads : {2U, 5U}) {
        options.threads = threads;
        EXPECT_EQ(TrianglesOf(options), alone) << threads << " threads";
    }
}

TEST(Tessellator, FinerDeflectionsGiveMoreTriangles)
{
    const std::uint64_t coarse = TriangleCount(4);
    const std::uint64_t normal = TriangleCount(1);
    const std::uint64_t fine = TriangleCount(0.5);
    EXPECT_LT(coarse, normal);
    EXPECT_LT(normal, fine);
    EXPECT_GT(coarse, 0U);
}

/// A cube of side 10 in the kernel's own form, without curves.
ImportResult ImportCube(const Folder& folder, const ImportOptions& options)
{
    const std::string path = folder / "cube.brep";
    EXPECT_TRUE(BRepTools::Write(BRepPrimAPI_MakeBox(10, 10, 10).Shape(), path.c_str()));
    return Import(path, options);
}

TEST(Tessellator, ADeflectionBelowTheMeshersPrecisionLosesNoFace)
{
    const Folder folder;
    ImportOptions options;
    options.linearDeflection = 1e-12;
    const ImportResult result = ImportCube(folder, options);
    ASSERT_TRUE(result.model) << result.error;
    EXPECT_EQ(result.model->Count().triangles, 12U);
    EXPECT_TRUE(result.model->warnings.empty());
}

TEST(Tessellator, ADeflectionBeyondAllNumbersIsThePartsSize)
{
    for (const double deflection : {1e300, std::numeric_limits<double>::infinity()}) {
        const Folder folder;
        ImportOptions options;
        options.linearDeflection = deflection;
        const ImportResult result = ImportCube(folder, options);
        ASSERT_TRUE(result.model) << result.error;
        EXPECT_EQ(result.model->Count().triangles, 12U);
        EXPECT_TRUE(result.model->warnings.empty());
        EXPECT_EQ(result.model->tessellation->linearDeflection, 1);
    }
}

TEST(Tessellator, AFileWhoseFacesAllFailIsAnError)
{
    const Folder folder;
    ImportOptions options;
    options.angularDeflection = 1e-15;
    const ImportResult result = ImportCube(folder, options);
    EXPECT_FALSE(result.model);
    EXPECT_EQ(result.error, "no face of the file could be tessellated");
}

TEST(Tessellator, WhatWasUsedIsReported)
{
    ImportOptions options;
    options.linearDeflection = 0.01;
    options.angularDeflection = 30;
    const ImportResult result = Import(importtest::Example(), options);
    ASSERT_TRUE(result.model) << result.error;
    ASSERT_TRUE(result.model->tessellation);
    EXPECT_EQ(result.model->tessellation->linearDeflection, 0.01);
    EXPECT_EQ(result.model->tessellation->angularDeflection, 30);
}

TEST(Tessellator, AWasherHasTheSubElementsOfAWasher)
{
    //  two flat rings and two half-open cylinders, each with a seam
    const ImportResult result = Import(importtest::Example());
    ASSERT_TRUE(result.model) << result.error;
    const ImportedModel& model = *result.model;
    const PartGeometry& washer = model.geometries.at(ProductNamed(model, "Washer 8").geometry);
    EXPECT_EQ(washer.trianglesPerFace.size(), 4U);
    EXPECT_EQ(washer.edges, 6U);
    EXPECT_EQ(washer.vertices, 4U);
    EXPECT_EQ(washer.Triangles(), 288U);
    EXPECT_FALSE(washer.broughtTriangles);
    EXPECT_NEAR(washer.extent.LargestSide(), 16, 0.1);
}

class StopAfter : public ImportMonitor {
public:
    explicit StopAfter(ImportStage stage) : stage_(stage) {}
    void Progress(ImportStage stage, double /*fraction*/) override
    {
        if (stage == stage_)
            stop_ = true;
    }
    bool IsCancelled() override { return stop_; }

private:
    ImportStage stage_;
    std::atomic<bool> stop_ = false;
};

TEST(Tessellator, CancellingEndsTheImportWithoutModelOrReason)
{
    for (const ImportStage stage : {ImportStage::Read, ImportStage::Tessellate}) {
        StopAfter monitor(stage);
        const ImportResult result = ImportModel(importtest::Example(), {}, &monitor);
        EXPECT_TRUE(result.cancelled);
        EXPECT_FALSE(result.model);
        EXPECT_EQ(result.error, "");
    }
}

class Recorder : public ImportMonitor {
public:
    void Progress(ImportStage stage, double fraction) override
    {
        inRange = inRange && fraction >= 0 && fraction <= 1;
        (stage == ImportStage::Read ? reads : meshes)++;
    }
    std::atomic<bool> inRange = true;
    std::atomic<int> reads = 0;
    std::atomic<int> meshes = 0;
};

TEST(Tessellator, ProgressIsToldInBothStages)
{
    Recorder monitor;
    ASSERT_TRUE(ImportModel(importtest::Example(), {}, &monitor).model);
    EXPECT_TRUE(monitor.inRange);
    EXPECT_GT(monitor.reads, 0);
    EXPECT_GT(monitor.meshes, 0);
}

}  // namespace
