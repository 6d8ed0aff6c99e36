/// Names of the bodies in a STEP file, which the toolkit's transfer drops.
#ifndef IMPORT_STEP_BODY_NAMES_H
#define IMPORT_STEP_BODY_NAMES_H

#include <StepData_StepModel.hxx>

#include <string>
#include <unordered_map>

namespace kuvimport {

/// From the number of a product's entity to the name of its body, UTF-8. Products whose shape is
/// made of several bodies, or of one without a name, are absent.
std::unordered_map<int, std::string> BodyNames(const Handle(StepData_StepModel) & entities);

}  // namespace kuvimport

#endif
