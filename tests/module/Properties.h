#ifndef module_Properties_h
#define module_Properties_h

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <iostream>
#include <string>
#include <utility>

namespace properties {

/// Checks a property on `cases` random inputs (RC_PARAMS still chooses the seed), and prints how
/// many agreed.
template <class Testable>
void Check(const std::string& what, int cases, Testable&& testable)
{
    rc::detail::TestParams params = rc::detail::configuration().testParams;
    params.maxSuccess = cases;
    rc::detail::TestMetadata metadata;
    metadata.id = what;
    metadata.description = what;
    const rc::detail::TestResult result =
        rc::detail::checkTestable(std::forward<Testable>(testable), metadata, params);
    const bool succeeded = result.is<rc::detail::SuccessResult>();
    if (succeeded)
        std::cout << "count: " << result.get<rc::detail::SuccessResult>().numSuccess << " " << what
                  << "\n";
    else
        rc::detail::printResultMessage(result, std::cerr);
    EXPECT_TRUE(succeeded) << what << ", seed " << params.seed;
}

}  // namespace properties

#endif
