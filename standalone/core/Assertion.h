#ifndef core_Assertion_h
#define core_Assertion_h

#include "KUVExport.h"

namespace core {

/// Receives the programming errors that are reported through `CheckFailure__`. Neither text is
/// null.
using FailureSink = void (*)(const char* message, const char* source, int line);

/// Replaces the sink and gives the former one. Null puts the default back: one line on standard
/// error. A sink may be called on any thread.
KUV_EXPORT FailureSink SetFailureSink(FailureSink sink);

}  // namespace core

#endif
