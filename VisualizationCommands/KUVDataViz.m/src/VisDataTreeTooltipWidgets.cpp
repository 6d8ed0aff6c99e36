#include "VisDataTreeTooltipWidgets.h"

#include "KUVObjectModel.h"
#include "KUVWidgets.h"

#include <new>

namespace {

const KUVModuleRegistration MODULE_REGISTRATION("KUVDataViz");

const KUVFillDictionary
    BUILDER_REGISTRATION("VisDataTreeTooltipWidgetsSYPMetaClassBuilder",
                         &fctCreateVisDataTreeTooltipWidgetsSYPMetaClassBuilder);

}  // namespace

KUVBaseUnknown* fctCreateVisDataTreeTooltipWidgetsSYPMetaClassBuilder()
{
    try {
        auto* const builder = new KUVSYPMetaClassBuilder;
        try {
            builder->SetNames("VisDataTreeTooltipWidgets", "", "");
        } catch (...) {
            builder->Release();
            throw;
        }
        return builder;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
