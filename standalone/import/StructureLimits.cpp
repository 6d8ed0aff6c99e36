#include "import/StructureLimits.h"

namespace kuvimport {

std::string Grouped(std::uint64_t number)
{
    std::string digits = std::to_string(number);
    for (std::size_t end = digits.size(); end > 3; end -= 3)
        digits.insert(end - 3, 1, ',');
    return digits;
}

std::string JudgeExpansion(const ImportedModel& model, const ImportOptions& options)
{
    if (ChildrenFirst(model).empty())
        return "the structure contains itself";
    const ModelCounts counts = model.Count();
    const std::uint32_t levels = counts.levels - (model.products[model.root].isFileRoot ? 1 : 0);
    if (levels > options.maxLevels)
        return "the structure is " + Grouped(levels) + " levels deep, more than " +
               Grouped(options.maxLevels);
    if (counts.instances > options.maxOccurrences)
        return "the structure expands to " + Grouped(counts.instances) +
               " occurrences, more than " + Grouped(options.maxOccurrences);
    return {};
}

}  // namespace kuvimport
