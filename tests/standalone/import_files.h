#ifndef standalone_import_files_h
#define standalone_import_files_h

// Files for the tests of the import: a folder of a test's own, and the folder of sample models.

#include "import/ModelImport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace importtest {

/// A new, empty folder that goes with the object.
class Folder {
public:
    Folder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "kuv_import_XXXXXX").string();
        path_ = mkdtemp(name.data()) ? name : std::string();
    }
    ~Folder()
    {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

    /// Answers the path.
    std::string Write(const std::string& name, const std::string& bytes) const
    {
        const std::string path = *this / name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }

private:
    std::string path_;
};

inline std::string ReadFile(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// The folder of the sample models; not there on every machine.
inline std::string ModelsFolder()
{
    const char* set = std::getenv("KUV_MODELS");
    return set ? set : KUV_MODELS_DEFAULT;
}

inline std::string Example() { return KUV_SOURCE_DIR "/examples/example.step"; }

inline kuvimport::ImportResult Import(const std::string& path,
                                      const kuvimport::ImportOptions& options = {})
{
    return kuvimport::ImportModel(path, options, nullptr);
}

/// The first product of a name; a test failure and the root when there is none.
inline const kuvimport::Product& ProductNamed(const kuvimport::ImportedModel& model,
                                              const std::string& name)
{
    for (const kuvimport::Product& product : model.products) {
        if (product.name == name)
            return product;
    }
    ADD_FAILURE() << "no product is named " << name;
    return model.products[model.root];
}

inline bool AnyContains(const std::vector<std::string>& texts, const std::string& part)
{
    return std::any_of(texts.begin(), texts.end(), [&](const std::string& text) {
        return text.find(part) != std::string::npos;
    });
}

}  // namespace importtest

#endif
