// junit.h: the results as the XML that CI servers read.

#pragma once

#include "host/scenario/report.h"

#include <span>
#include <string>
#include <vector>

namespace orvanel {

/// How one scenario went.
struct CaseResult {
    std::string name;  // of its file
    double seconds;
    std::vector<Fault> faults;
};

/// One test case for each result: a failure for each expectation not met, an error for each
/// other fault. Bytes that no XML may hold stand as \xHH.
std::string junit_xml(std::span<const CaseResult> results);

}  // namespace orvanel
