// Every sample model against the numbers that were taken from it by other means: manifest.json (the
// CAD toolkit's own structure tools) and tests/models/count_triangles.py (the bytes of mesh files).
// Skipped with a word where the folder of the samples is absent.
#include "import/SceneBuilder.h"

#include "core/SceneCounts.h"

#include "import_files.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cctype>
#include <cstdio>
#include <iostream>

namespace {

using namespace kuvimport;
using importtest::ModelsFolder;
using nlohmann::json;

const json& Manifest()
{
    static const json MANIFEST = [] {
        std::ifstream stream(ModelsFolder() + "/manifest.json");
        return stream ? json::parse(stream) : json::array();
    }();
    return MANIFEST;
}

bool StartsWith(const std::string& text, const std::string& start)
{
    return text.compare(0, start.size(), start) == 0;
}

struct Sample {
    std::string file;
    json measured;
};

/// Companions of multi-file models are no models of their own here; they have no figures.
std::vector<Sample> CadSamples()
{
    std::vector<Sample> samples;
    for (const json& entry : Manifest()) {
        const std::string file = entry.at("file");
        if ((StartsWith(file, "step/") || StartsWith(file, "iges/")) &&
            !entry.at("measured").empty())
            samples.push_back({file, entry.at("measured")});
    }
    return samples;
}

std::vector<std::string> MeshSamples()
{
    std::vector<std::string> files;
    for (const json& entry : Manifest()) {
        const std::string file = entry.at("file");
        const bool isBuffer = file.size() > 4 && file.substr(file.size() - 4) == ".bin";
        if ((StartsWith(file, "gltf/") || StartsWith(file, "mesh/")) && !isBuffer)
            files.push_back(file);
    }
    return files;
}

/// For test names: letters and digits only.
std::string TestName(std::string file)
{
    for (char& c : file) {
        if (!std::isalnum(static_cast<unsigned char>(c)))
            c = '_';
    }
    return file;
}

void PrintSeconds(const std::string& file, const ImportedModel& model)
{
    std::printf("%s: read %.3f s, mesh %.3f s\n", file.c_str(), model.secondsRead,
                model.secondsMesh);
}

/// The scene must hold what the record says, however often parts are shared.
void ExpectSceneEqualsRecord(const ImportedModel& model)
{
    core::SceneOccurrenceRep* root = BuildScene(model);
    ASSERT_NE(root, nullptr);
    const core::SceneCounts scene = core::CountScene(root);
    root->Release();
    const ModelCounts record = model.Count();
    EXPECT_EQ(scene.occurrences, record.instances + 1);
    EXPECT_EQ(scene.shapes, record.reps);
    EXPECT_EQ(scene.faces, record.faces);
    EXPECT_EQ(scene.edges, record.edges);
    EXPECT_EQ(scene.vertices, record.vertices);
    EXPECT_EQ(scene.triangles, record.triangles);
    EXPECT_EQ(scene.uniqueTriangles, record.trianglesUnique);
}

bool IsMadeUp(const std::string& name)
{
    return name.empty() || name.find("[0:1:") != std::string::npos;
}

void ExpectNamesOfTheFile(const ImportedModel& model)
{
    for (const Product& product : model.products) {
        EXPECT_FALSE(IsMadeUp(product.name)) << product.name;
        for (const Component& component : product.components)
            EXPECT_EQ(component.name.find("[0:1:"), std::string::npos) << component.name;
    }
}

class CadModels : public testing::TestWithParam<Sample> {};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(CadModels);
INSTANTIATE_TEST_SUITE_P(Samples, CadModels, testing::ValuesIn(CadSamples()),
                         [](const auto& instance) { return TestName(instance.param.file); });

TEST_P(CadModels, HaveTheCountsOfTheManifest)
{
    const json& measured = GetParam().measured;
    const auto want = [&](const char* key) { return measured.at(key).get<std::uint64_t>(); };
    const ImportResult result = importtest::Import(ModelsFolder() + "/" + GetParam().file);
    ASSERT_TRUE(result.model) << result.error;
    PrintSeconds(GetParam().file, *result.model);
    const ModelCounts counts = result.model->Count();
    EXPECT_EQ(counts.products, want("parts") + want("asms"));
    EXPECT_EQ(counts.reps, want("instances"));
    // A file with several free shapes gets a root above them that is no node of the file.
    EXPECT_EQ(counts.instances, want("free") == 1 ? want("nodes") - 1 : want("nodes"));
    EXPECT_EQ(counts.faces, want("faces_inst"));
    EXPECT_EQ(counts.triangles, want("tris_inst"));
    EXPECT_EQ(counts.trianglesUnique, want("tris"));
    ExpectNamesOfTheFile(*result.model);
    ExpectSceneEqualsRecord(*result.model);
}

json CountByScript(const std::string& path)
{
    const std::string command =
        "python3 '" KUV_SOURCE_DIR "/tests/models/count_triangles.py' '" + path + "'";
    std::string output;
    std::array<char, 4096> buffer{};
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return {};
    while (const std::size_t size = fread(buffer.data(), 1, buffer.size(), pipe))
        output.append(buffer.data(), size);
    pclose(pipe);
    const json counts = json::parse(output, nullptr, /*allow_exceptions=*/false);
    return counts.is_object() ? counts.value(path, json::object()) : json::object();
}

class MeshModels : public testing::TestWithParam<std::string> {};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(MeshModels);
INSTANTIATE_TEST_SUITE_P(Samples, MeshModels, testing::ValuesIn(MeshSamples()),
                         [](const auto& instance) { return TestName(instance.param); });

TEST_P(MeshModels, HaveTheTrianglesThatAScriptCountsInTheirBytes)
{
    const std::string path = ModelsFolder() + "/" + GetParam();
    const json counted = CountByScript(path);
    ASSERT_TRUE(counted.contains("triangles")) << counted;
    const ImportResult result = importtest::Import(path);
    ASSERT_TRUE(result.model) << result.error;
    PrintSeconds(GetParam(), *result.model);
    EXPECT_EQ(result.model->Count().triangles, counted.at("triangles").get<std::uint64_t>());
    EXPECT_EQ(result.model->Count().trianglesUnique, counted.at("unique").get<std::uint64_t>());
    EXPECT_FALSE(result.model->tessellation) << "the file brought its triangles";
    ExpectNamesOfTheFile(*result.model);
    ExpectSceneEqualsRecord(*result.model);
}

std::vector<std::string> BrokenSamples()
{
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(ModelsFolder()) / "broken";
    std::vector<std::string> files;
    std::error_code error;
    for (auto it = fs::recursive_directory_iterator(folder, error);
         it != fs::recursive_directory_iterator(); it.increment(error)) {
        if (it->is_regular_file())
            files.push_back(it->path().lexically_relative(folder).string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// What tests/models/broken.json says of a file; see there for the reasons.
json ExpectationOf(const std::string& file)
{
    std::ifstream stream(KUV_SOURCE_DIR "/tests/models/broken.json");
    return json::parse(stream).value(file, json::object());
}

class BrokenModels : public testing::TestWithParam<std::string> {};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(BrokenModels);
INSTANTIATE_TEST_SUITE_P(Samples, BrokenModels, testing::ValuesIn(BrokenSamples()),
                         [](const auto& instance) { return TestName(instance.param); });

TEST_P(BrokenModels, EndAsTheTableSays)
{
    const json expected = ExpectationOf(GetParam());
    ASSERT_TRUE(expected.contains("ends")) << "tests/models/broken.json does not name the file";
    const std::string ends = expected.at("ends");
    const std::string says = expected.at("says");
    const ImportResult result = importtest::Import(ModelsFolder() + "/broken/" + GetParam());
    if (ends == "error") {
        EXPECT_FALSE(result.model);
        EXPECT_FALSE(result.error.empty());
        EXPECT_EQ(result.error.find('\n'), std::string::npos) << "a reason is one line";
        EXPECT_NE(result.error.find(says), std::string::npos) << result.error;
        return;
    }
    ASSERT_TRUE(result.model) << result.error;
    EXPECT_GT(result.model->Count().instances + result.model->Count().reps, 0U);
    ASSERT_TRUE(ends == "warning" || ends == "picture") << ends;
    EXPECT_EQ(result.model->warnings.empty(), ends == "picture");
    if (ends == "warning") {
        EXPECT_TRUE(importtest::AnyContains(result.model->warnings, says));
    }
}

TEST(SampleModels, AreComparedWhereTheirFolderExists)
{
    if (Manifest().empty())
        GTEST_SKIP() << "no sample models in " << ModelsFolder() << " (set KUV_MODELS)";
    EXPECT_FALSE(CadSamples().empty());
    EXPECT_FALSE(MeshSamples().empty());
    EXPECT_FALSE(BrokenSamples().empty());
}

}  // namespace
