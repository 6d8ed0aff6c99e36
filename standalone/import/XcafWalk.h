/// From the toolkit's document of labels to the plain record: product labels become products,
/// component labels components, simple shapes geometries.
#ifndef IMPORT_XCAF_WALK_H
#define IMPORT_XCAF_WALK_H

#include "import/ImportedModel.h"

#include <TDF_Label.hxx>
#include <TDocStd_Document.hxx>

#include <functional>
#include <string>

namespace kuvimport {

/// What a label's name stands for in the file.
struct LabelText {
    std::string name;
    std::string id;
    std::string shapeName;
};

/// From the raw name of a label to its texts; readers that hide keys in names resolve them here.
using LabelResolver = std::function<LabelText(const std::string& rawName)>;

/// A new, empty document; names are not invented for labels without one.
Handle(TDocStd_Document) NewXcafDocument();

/// Fills `model` with the products below the free shapes of `document`. One free shape is the root
/// itself; of several the root is a product of the reader's making (`isFileRoot`) named
/// `fileRootName`.
///
/// Geometries get their native shape only: counting waits for the tessellation.
void FillFromDocument(const Handle(TDocStd_Document) & document, const LabelResolver& resolve,
                      const std::string& fileRootName, ImportedModel& model);

}  // namespace kuvimport

#endif
