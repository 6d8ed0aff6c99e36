#include "core/ResourcePaths.h"

#include "KUVMessages.h"
#include "KUVObjectModel.h"

#include <fstream>
#include <map>
#include <new>
#include <string>
#include <utility>

// A catalog is a file "CATALOG.LANGUAGE.catalog" in the resource folder "catalogs", UTF-8, one
// entry a line: key, "=", text. Blanks around key and text do not count; lines that begin with "#"
// and lines without "=" say nothing; "\n" in a text is a new line and "\\" a backslash.

namespace {

using Texts = std::map<std::string, KUVUnicodeString, std::less<>>;

constexpr const char* FALLBACK_LANGUAGE = "en";

std::string Trimmed(const std::string& text)
{
    constexpr const char* BLANKS = " \t\r";
    const std::size_t first = text.find_first_not_of(BLANKS);
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}

std::string Unescaped(const std::string& text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            plain += text[i];
            continue;
        }
        ++i;
        plain += text[i] == 'n' ? '\n' : text[i];
    }
    return plain;
}

Texts ReadCatalog(const std::string& catalog, const std::string& language)
{
    Texts texts;
    const std::string path = core::FindResource("catalogs", catalog + '.' + language + ".catalog");
    if (path.empty())
        return texts;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        const std::size_t equals = line.find('=');
        if (line[0] == '#' || equals == std::string::npos)
            continue;
        texts.insert_or_assign(Trimmed(line.substr(0, equals)),
                               KUVUnicodeString(Unescaped(Trimmed(line.substr(equals + 1)))));
    }
    // A reader that ran out of memory only marks itself as broken; half a catalog is not kept.
    if (file.bad())
        throw std::bad_alloc();
    return texts;
}

/// The user's language as the environment names it, without encoding and variant: "de_AT" for
/// "de_AT.UTF-8@euro". English for the locales "C" and "POSIX".
std::string UserLanguage()
{
    for (const char* const variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* const value = KUVGetEnv(variable);
        if (!value || !*value)
            continue;
        const std::string locale = value;
        const std::string language = locale.substr(0, locale.find_first_of(".@"));
        return language == "C" || language == "POSIX" ? FALLBACK_LANGUAGE : language;
    }
    return FALLBACK_LANGUAGE;
}

/// The catalogs read so far, for one search path.
class Catalogs {
public:
    const KUVUnicodeString* Find(const std::string& catalog, const std::string& key)
    {
        const char* const path = KUVGetEnv("KUV_RESOURCES");
        if (searchPath_ != (path ? path : "")) {
            searchPath_ = path ? path : "";
            texts_.clear();
        }
        const std::string language = UserLanguage();
        const std::string plainLanguage = language.substr(0, language.find('_'));
        for (const std::string& tried : {language, plainLanguage, std::string(FALLBACK_LANGUAGE)}) {
            const Texts& texts = Read(catalog, tried);
            const auto found = texts.find(key);
            if (found != texts.end())
                return &found->second;
        }
        return nullptr;
    }

private:
    const Texts& Read(const std::string& catalog, const std::string& language)
    {
        const auto name = std::make_pair(catalog, language);
        const auto known = texts_.find(name);
        if (known != texts_.end())
            return known->second;
        return texts_.emplace(name, ReadCatalog(catalog, language)).first->second;
    }

    std::string searchPath_;
    std::map<std::pair<std::string, std::string>, Texts> texts_;
};

/// Puts the parameters in the places of "/P1", "/P2" and so on. A place without parameter stays as
/// it is; what a parameter says is not searched again.
KUVUnicodeString WithParameters(const KUVUnicodeString& text, const KUVUnicodeString* parameters,
                                int parameterCount)
{
    if (!parameters || parameterCount < 1)
        return text;
    const std::string from(text.GetUtf8(), text.GetByteCount());
    std::string made;
    for (std::size_t i = 0; i < from.size();) {
        std::size_t end = i;
        long number = 0;
        if (from.compare(i, 2, "/P") == 0) {
            for (end = i + 2; end < from.size() && from[end] >= '0' && from[end] <= '9' &&
                              number <= parameterCount;
                 ++end)
                number = 10 * number + (from[end] - '0');
        }
        if (number >= 1 && number <= parameterCount) {
            const KUVUnicodeString& parameter = parameters[number - 1];
            made.append(parameter.GetUtf8(), parameter.GetByteCount());
            i = end;
        } else {
            made += from[i++];
        }
    }
    return KUVUnicodeString(std::move(made));
}

}  // namespace

KUVUnicodeString KUVMsgCatalog::BuildMessage(const char* catalog, const char* key,
                                             const KUVUnicodeString* parameters, int parameterCount,
                                             const KUVUnicodeString& defaultText)
{
    static Catalogs* const catalogs = new Catalogs;
    if (!catalog || !key)
        return defaultText;
    const KUVUnicodeString* const text = catalogs->Find(catalog, key);
    return WithParameters(text ? *text : defaultText, parameters, parameterCount);
}
