/// A model file's first and last bytes, and what they say about its format.
#ifndef IMPORT_FILE_CONTENT_H
#define IMPORT_FILE_CONTENT_H

#include <cstdint>
#include <string>
#include <string_view>

namespace kuvimport {

enum class ModelFormat {
    Unknown,
    Step,
    Iges,
    Brep,
    Vrml,
    Gltf,
    Glb,
    Obj,
    Stl,
    Ply,
    Mesh3mf,
    Dae,
    Off
};

/// The name of a format in reports: "step", "gltf" (for both of its forms), ...; "" for `Unknown`.
const char* NameOf(ModelFormat format);

/// The extension by which toolkits know a format: ".step", ...; "" for `Unknown`.
const char* ExtensionOf(ModelFormat format);

/// Reads at most 64 KiB from either end, so it costs the same for every file.
class FileContent {
public:
    explicit FileContent(const std::string& path);

    /// Empty, or why the file cannot be read at all: "no such file", "is a directory", ...
    const std::string& Problem() const { return problem_; }
    std::uint64_t Size() const { return size_; }
    std::string_view Head() const { return head_; }
    bool TailContains(std::string_view text) const;

    /// By content where the content is unmistakable, else by the extension.
    ModelFormat Format() const;
    /// Whether the extension is one that says another format than the content.
    bool ExtensionMisleads() const;

private:
    ModelFormat FormatByContent() const;
    ModelFormat FormatByExtension() const;
    bool LooksLikeBinaryStl() const;
    bool LooksLikeIges() const;

    std::string path_;
    std::string problem_;
    std::string head_;
    std::string tail_;
    std::uint64_t size_ = 0;
};

}  // namespace kuvimport

#endif
