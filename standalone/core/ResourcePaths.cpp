#include "core/ResourcePaths.h"

#include "KUV2D.h"
#include "KUVObjectModel.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <new>

namespace {

/// The folder that this library was loaded from, with a slash at its end; empty when it is not
/// known.
std::string LibraryFolder()
{
    Dl_info info;
    if (dladdr(reinterpret_cast<const void*>(&core::ResourceFolders), &info) == 0 ||
        !info.dli_fname)
        return {};
    const std::string file = info.dli_fname;
    const std::size_t slash = file.rfind('/');
    return slash == std::string::npos ? std::string() : file.substr(0, slash + 1);
}

void AppendListed(const char* listed, std::vector<std::string>& folders)
{
    std::string folder;
    for (; *listed; ++listed) {
        if (*listed != ':') {
            folder += *listed;
            continue;
        }
        if (!folder.empty())
            folders.push_back(folder);
        folder.clear();
    }
    if (!folder.empty())
        folders.push_back(folder);
}

bool IsFile(const std::string& path)
{
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool IsPlainName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

/// The folders that do not change while the process runs.
const std::vector<std::string>& FixedFolders()
{
    static const std::vector<std::string> folders = [] {
        std::vector<std::string> made;
        const std::string library = LibraryFolder();
        if (!library.empty())
            made.push_back(library + KUV_RESOURCES_INSTALLED);
        made.emplace_back(KUV_RESOURCES_SOURCE);
        return made;
    }();
    return folders;
}

}  // namespace

std::vector<std::string> core::ResourceFolders()
{
    std::vector<std::string> folders;
    if (const char* const listed = KUVGetEnv("KUV_RESOURCES"))
        AppendListed(listed, folders);
    folders.insert(folders.end(), FixedFolders().begin(), FixedFolders().end());
    return folders;
}

std::string core::FindResource(const std::string& kind, const std::string& fileName)
{
    if (!IsPlainName(fileName))
        return {};
    for (std::string& path : ResourceFolders()) {
        path.append("/").append(kind).append("/").append(fileName);
        if (IsFile(path))
            return path;
    }
    return {};
}

KUVUnicodeString KUVGetImagePathNameEx(const KUVUnicodeString& name)
{
    try {
        return KUVUnicodeString(
            core::FindResource("icons", std::string(name.GetUtf8(), name.GetByteCount())));
    } catch (const std::bad_alloc&) {
        return {};
    }
}
