#pragma once

#include <map>
#include <string>
#include <vector>

/// One row of the table: what an operation costs in relation to something else that is measured in
/// the same run, or beside it.
struct Comparison {
    enum class Kind { AT_MOST, TIMES_FASTER, AT_MOST_BESIDE };

    std::string strTitle;
    std::string strMeasured;  ///< name of a measurement
    std::string strPlain;     ///< name of the other side; empty where there is nothing beside
    Kind eKind;
    double fTarget;
    std::string strUnit = "";  ///< of the target, for AT_MOST_BESIDE
    double fUnit = 1;          ///< in the unit of the measurement
};

/// Name of a measurement to its median in nanoseconds, or to bytes; with "/cpu" behind the name the
/// processor time.
using Medians = std::map<std::string, double>;

/// All rows, in the order of the table.
const std::vector<Comparison>& AllComparisons();

/// Prints the rows whose two sides were measured. False when one of them misses its target.
bool PrintComparisons(const Medians& medians);

/// Writes the same as JSON.
void WriteComparisons(const Medians& medians, const std::string& strFile);
