#include "import/ModelImport.h"

#include "import_files.h"

#include <cstdio>

namespace {

using namespace kuvimport;
using importtest::Folder;
using importtest::Import;

TEST(ModelImport, DefaultsAreTheCommandLines)
{
    const ImportOptions options;
    EXPECT_EQ(options.linearDeflection, 0.004);
    EXPECT_EQ(options.angularDeflection, 20);
    EXPECT_EQ(options.maxOccurrences, 5000000U);
    EXPECT_EQ(options.maxLevels, 512U);
}

TEST(ModelImport, WhatIsNoModelHasAReasonWithoutTheFilesName)
{
    const Folder folder;
    EXPECT_EQ(Import(folder / "nothing.step").error, "no such file");
    EXPECT_EQ(Import(folder / "").error, "is a folder, not a file");
    EXPECT_EQ(Import(folder.Write("empty.glb", "")).error, "the file is empty");
    EXPECT_EQ(Import(folder.Write("letter.txt", "Dear all,")).error, "the format is not known");
}

TEST(ModelImport, AFileUnderAnOddPathIsRead)
{
    const Folder folder;
    const std::string path =
        folder.Write("ein Ordner/Gehäuse #1%20.stl", "solid\nfacet normal 0 0 1\nouter loop\n"
                                                     "vertex 0 0 0\nvertex 1 0 0\nvertex 1 1 0\n"
                                                     "endloop\nendfacet\nendsolid\n");
    const ImportResult result = Import(path);
    ASSERT_TRUE(result.model) << result.error;
    EXPECT_EQ(result.model->products[result.model->root].name, "Gehäuse #1%20");
}

TEST(ModelImport, NodesWithoutAnyShapeAreShownWithAWarning)
{
    const Folder folder;
    const ImportResult result =
        Import(folder.Write("a.gltf", R"({"asset":{"version":"2.0"},"scenes":[{"nodes":[0]}],)"
                                      R"("nodes":[{"name":"empty","children":[1]},{}]})"));
    ASSERT_TRUE(result.model) << result.error;
    EXPECT_EQ(result.model->Count().instances, 2U);
    EXPECT_TRUE(importtest::AnyContains(result.model->warnings, "no shape of the file"));
    for (const Product& product : result.model->products)
        EXPECT_NE(product.name, "");
}

TEST(ModelImport, TheExampleIsWhatItsGeneratorWrites)
{
    const Folder folder;
    const std::string path = folder / "generated.step";
    ASSERT_EQ(std::system((std::string("'" KUV_GENERATE_EXAMPLE "' '") + path + "'").c_str()), 0);
    const ImportResult generated = Import(path);
    const ImportResult kept = Import(importtest::Example());
    ASSERT_TRUE(generated.model && kept.model) << generated.error << kept.error;
    const ModelCounts a = generated.model->Count();
    const ModelCounts b = kept.model->Count();
    EXPECT_EQ(a.products, b.products);
    EXPECT_EQ(a.instances, b.instances);
    EXPECT_EQ(a.faces, b.faces);
    EXPECT_EQ(a.triangles, b.triangles);
    EXPECT_LT(std::filesystem::file_size(importtest::Example()), 1000000U);
}

}  // namespace
