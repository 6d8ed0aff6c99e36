#include "import/StepReader.h"

#include "import/FileContent.h"
#include "import/StepBodyNames.h"
#include "import/StructureLimits.h"
#include "import/Text.h"
#include "import/ToolkitGuard.h"
#include "import/XcafWalk.h"

#include <IFSelect_ReturnStatus.hxx>
#include <Interface_Static.hxx>
#include <STEPCAFControl_ExternFile.hxx>
#include <STEPCAFControl_Reader.hxx>
#include <STEPControl_Reader.hxx>
#include <StepBasic_Product.hxx>
#include <StepBasic_ProductDefinition.hxx>
#include <StepBasic_ProductDefinitionFormation.hxx>
#include <StepData_StepModel.hxx>
#include <StepRepr_NextAssemblyUsageOccurrence.hxx>
#include <TCollection_HAsciiString.hxx>
#include <XSControl_WorkSession.hxx>

#include <algorithm>
#include <map>
#include <set>
#include <unordered_map>

namespace kuvimport {

namespace {

/// Starts the keys that stand in for names while the toolkit transfers a file; no name begins with
/// it.
constexpr char KEY_MARK = '\x1F';

std::string TextOf(const Handle(TCollection_HAsciiString) & text)
{
    return text.IsNull() ? std::string() : Trimmed(ToUtf8(text->ToCString()));
}

Handle(TCollection_HAsciiString) KeyOf(int entity)
{
    return new TCollection_HAsciiString((KEY_MARK + std::to_string(entity)).c_str());
}

/// The names and identifiers of products and of their usages.
///
/// The toolkit keeps no way back from a label to its entity, and mixes ids and descriptions into
/// the names. So every product and usage is given a key for a name before the transfer, and the
/// labels' names are looked up here afterwards.
class NameKeys {
public:
    explicit NameKeys(const Handle(StepData_StepModel) & model)
    {
        for (auto& [product, name] : BodyNames(model))
            texts_[std::to_string(product)].shapeName = name;
        const int count = model->NbEntities();
        for (int i = 1; i <= count; ++i) {
            const Handle(Standard_Transient)& entity = model->Value(i);
            if (const auto product = Handle(StepBasic_Product)::DownCast(entity))
                AddProduct(i, product);
            else if (const auto usage =
                         Handle(StepRepr_NextAssemblyUsageOccurrence)::DownCast(entity))
                AddUsage(i, usage);
        }
    }

    LabelText Resolve(const std::string& rawName) const
    {
        if (!rawName.empty() && rawName.front() == KEY_MARK) {
            const auto known = texts_.find(rawName.substr(1));
            return known == texts_.end() ? LabelText{} : known->second;
        }
        LabelText text;
        text.name = Trimmed(ToUtf8(rawName));
        return text;
    }

private:
    void AddProduct(int number, const Handle(StepBasic_Product) & product)
    {
        LabelText& text = texts_[std::to_string(number)];
        text.name = TextOf(product->Name());
        text.id = TextOf(product->Id());
        if (text.name.empty())
            text.name = text.id;
        product->SetName(KeyOf(number));
    }

    void AddUsage(int number, const Handle(StepRepr_NextAssemblyUsageOccurrence) & usage)
    {
        LabelText& text = texts_[std::to_string(number)];
        text.name = TextOf(usage->Name());
        text.id = TextOf(usage->Id());
        usage->SetName(KeyOf(number));
    }

    std::unordered_map<std::string, LabelText> texts_;
};

/// The product structure alone, as the file states it, to be judged before the toolkit expands it:
/// the toolkit follows usages recursively and does not survive a loop.
std::string JudgeStructure(const Handle(StepData_StepModel) & entities,
                           const ImportOptions& options)
{
    ImportedModel skeleton;
    skeleton.products.emplace_back().isFileRoot = true;
    std::map<const Standard_Transient*, std::uint32_t> products;
    const auto productOf = [&](const Handle(StepBasic_ProductDefinition) & definition) {
        const auto next = static_cast<std::uint32_t>(skeleton.products.size());
        const auto [known, isNew] = products.try_emplace(definition.get(), next);
        if (isNew)
            skeleton.products.emplace_back();
        return known->second;
    };
    std::vector<bool> isUsed(1, true);
    for (int i = 1; i <= entities->NbEntities(); ++i) {
        const auto usage =
            Handle(StepRepr_NextAssemblyUsageOccurrence)::DownCast(entities->Value(i));
        if (usage.IsNull() || usage->RelatingProductDefinition().IsNull() ||
            usage->RelatedProductDefinition().IsNull())
            continue;
        const std::uint32_t parent = productOf(usage->RelatingProductDefinition());
        const std::uint32_t child = productOf(usage->RelatedProductDefinition());
        isUsed.resize(skeleton.products.size(), false);
        isUsed[child] = true;
        skeleton.products[parent].components.emplace_back().product = child;
    }
    // A loop that nothing outside it uses hangs below the root as well, or it would stay unseen.
    const bool isAllUsed =
        products.size() > 0 && std::find(isUsed.begin(), isUsed.end(), false) == isUsed.end();
    for (std::uint32_t i = 1; i < skeleton.products.size(); ++i) {
        if (!isUsed[i] || isAllUsed)
            skeleton.products[0].components.emplace_back().product = i;
    }
    if (skeleton.products[0].components.size() == 1)
        skeleton.root = skeleton.products[0].components[0].product;
    return JudgeExpansion(skeleton, options);
}

/// "A, B, C" and how many more.
std::string Listed(const std::set<std::string>& items)
{
    constexpr std::size_t SHOWN = 5;
    std::string text;
    std::size_t count = 0;
    for (const std::string& item : items) {
        if (count++ == SHOWN)
            return text + " and " + std::to_string(items.size() - SHOWN) + " more";
        text += (text.empty() ? "" : ", ") + item;
    }
    return text;
}

/// Entities that break the schema are dropped or read in part, mostly annotations; says which.
void WarnOfLostEntities(const Handle(StepData_StepModel) & entities, ImportedModel& model)
{
    std::set<std::string> types;
    std::uint64_t lost = 0;
    for (int i = 1; i <= entities->NbEntities(); ++i) {
        if (!entities->IsErrorEntity(i))
            continue;
        ++lost;
        // Of an entity with several types the toolkit gives a list in parentheses.
        std::string type = entities->TypeName(entities->Value(i), Standard_False);
        type.erase(
            std::remove_if(type.begin(), type.end(), [](char c) { return c == '(' || c == ')'; }),
            type.end());
        std::replace(type.begin(), type.end(), ',', '+');
        types.insert(type);
    }
    if (lost > 0)
        model.warnings.push_back(
            Grouped(lost) + " of " + Grouped(static_cast<std::uint64_t>(entities->NbEntities())) +
            " entities do not follow the schema and were read in part or not at all (" +
            Listed(types) + ")");
}

void WarnOfLostFiles(const STEPCAFControl_Reader& reader, ImportedModel& model)
{
    std::set<std::string> lost;
    using Files = NCollection_DataMap<TCollection_AsciiString, Handle(STEPCAFControl_ExternFile)>;
    for (Files::Iterator it(reader.ExternFiles()); it.More(); it.Next()) {
        const Handle(STEPCAFControl_ExternFile)& file = it.Value();
        if (!file.IsNull() && file->GetLoadStatus() == IFSelect_RetDone &&
            file->GetTransferStatus())
            continue;
        lost.insert(Quoted(it.Key().ToCString()));
    }
    if (!lost.empty())
        model.warnings.push_back(
            std::to_string(lost.size()) +
            " referenced files could not be read, their parts have no shape: " + Listed(lost));
}

std::string ReasonOfFailure(const std::string& path)
{
    const FileContent content(path);
    if (content.Head().find("ISO-10303-21") == std::string_view::npos)
        return "the file is not a STEP file";
    if (!content.TailContains("END-ISO-10303-21"))
        return "the STEP file is cut off (no END-ISO-10303-21 at its end)";
    return "the STEP file is malformed";
}

std::string Transfer(STEPCAFControl_Reader& reader, const ImportOptions& options,
                     ImportMonitor* monitor, ImportedModel& model)
{
    const Handle(StepData_StepModel) entities = reader.ChangeReader().StepModel();
    if (entities.IsNull() || entities->NbEntities() == 0)
        return "the STEP file holds no data";
    if (std::string reason = JudgeStructure(entities, options); !reason.empty())
        return reason;
    const NameKeys names(entities);
    Handle(TDocStd_Document) document = NewXcafDocument();
    Handle(MonitorIndicator) indicator = new MonitorIndicator(monitor, ImportStage::Read, 0.4, 1.0);
    if (!reader.Transfer(document, indicator->Start()))
        return "the STEP file holds no product or shape";
    FillFromDocument(
        document, [&](const std::string& rawName) { return names.Resolve(rawName); }, {}, model);
    WarnOfLostEntities(entities, model);
    WarnOfLostFiles(reader, model);
    return {};
}

}  // namespace

std::string ReadStep(const std::string& path, const ImportOptions& options, ImportMonitor* monitor,
                     ImportedModel& model)
{
    std::string reason;
    const std::string fault = RunGuarded([&] {
        STEPCAFControl_Reader reader;
        reader.SetColorMode(Standard_True);
        reader.SetNameMode(Standard_True);
        reader.SetLayerMode(Standard_False);
        reader.SetPropsMode(Standard_False);
        reader.SetGDTMode(Standard_False);
        reader.SetMatMode(Standard_False);
        if (reader.ReadFile(path.c_str()) != IFSelect_RetDone)
            reason = ReasonOfFailure(path);
        else if (!IsCancelled(monitor))
            reason = Transfer(reader, options, monitor, model);
    });
    return fault.empty() ? reason : fault;
}

}  // namespace kuvimport
