/// The one entrance to the importers: a model file in, plain records or a one-line reason out.
#ifndef IMPORT_MODEL_IMPORT_H
#define IMPORT_MODEL_IMPORT_H

#include "import/ImportedModel.h"

#include <cstdint>
#include <memory>
#include <string>

namespace kuvimport {

/// How to read. The defaults are the command line's.
struct ImportOptions {
    /// Chord deflection as a fraction of the largest side of a part's bounding box.
    double linearDeflection = 0.004;
    /// In degrees.
    double angularDeflection = 20;
    /// Threads that tessellate; 0 takes the machine's number of cores.
    unsigned threads = 0;
    /// A structure that expands to more occurrences, or nests deeper, is refused.
    std::uint64_t maxOccurrences = 5'000'000;
    std::uint32_t maxLevels = 512;
};

enum class ImportStage { Read, Tessellate };

/// Told how far the import is, asked whether to stop. Calls come from the thread that runs the
/// import and from the threads that tessellate, possibly at the same time.
class ImportMonitor {
public:
    virtual ~ImportMonitor() = default;
    /// `fraction` of the stage, 0 to 1.
    virtual void Progress(ImportStage stage, double fraction);
    /// Once true, the import ends soon with `ImportResult::cancelled`.
    virtual bool IsCancelled();
};

/// Either a model, or `error` with the reason in one line (without the file's name), or
/// `cancelled`.
struct ImportResult {
    std::unique_ptr<ImportedModel> model;
    std::string error;
    bool cancelled = false;
};

/// Reads `path`, by its content first and its extension second, and tessellates what has surfaces.
///
/// A file of which nothing usable was read is an error; one of which something was lost gives a
/// model with `warnings`. Corrupt files can make a toolkit crash or run away: faults that a signal
/// handler can catch become errors here, the rest is for a supervised process. `monitor` may be
/// null. Not to be called from two threads at the same time: the toolkits keep settings per
/// process.
ImportResult ImportModel(const std::string& path, const ImportOptions& options,
                         ImportMonitor* monitor);

}  // namespace kuvimport

#endif
