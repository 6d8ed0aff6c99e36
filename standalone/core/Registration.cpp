#include "KUVObjectModel.h"

#include <map>
#include <set>
#include <string>

namespace {

// Filled while libraries load and asked while they unload: both live for the whole process.

std::set<std::string, std::less<>>& ModuleNames()
{
    static auto* const names = new std::set<std::string, std::less<>>;
    return *names;
}

std::map<std::string, KUVBuilderFactory, std::less<>>& Builders()
{
    static auto* const builders = new std::map<std::string, KUVBuilderFactory, std::less<>>;
    return *builders;
}

}  // namespace

KUVModuleRegistration::KUVModuleRegistration(const char* moduleName)
{
    if (moduleName)
        ModuleNames().emplace(moduleName);
}

unsigned char KUVModuleRegistration::IsRegistered(const char* moduleName)
{
    return moduleName && ModuleNames().find(moduleName) != ModuleNames().end();
}

void KUVFillDictionary::Register(const char* name, KUVBuilderFactory factory)
{
    if (name && factory)
        Builders().insert_or_assign(name, factory);
}

KUVBuilderFactory KUVFillDictionary::Find(const char* name)
{
    if (!name)
        return nullptr;
    const auto found = Builders().find(name);
    return found == Builders().end() ? nullptr : found->second;
}
