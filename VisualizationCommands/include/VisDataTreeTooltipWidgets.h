#ifndef VisDataTreeTooltipWidgets_h
#define VisDataTreeTooltipWidgets_h

#include "VisExport.h"

class KUVBaseUnknown;

/// The builder of the tooltip widget's introspection, registered when the library loads; the caller
/// owns the one reference. Null when memory runs out.
///
/// The widget itself does not exist yet: the builder names the class "VisDataTreeTooltipWidgets",
/// declares no property and makes no widget.
extern "C" VIS_EXPORT KUVBaseUnknown* fctCreateVisDataTreeTooltipWidgetsSYPMetaClassBuilder();

#endif
