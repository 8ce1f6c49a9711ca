#pragma once

#include "bench/Pairs.h"

#include <string>
#include <vector>

namespace bench
{

/// Prints every run as it ends, and at the end a table of the pairs with their ratios. With repetitions the fastest run
/// counts, because a disturbance can only make a run slower.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    RatioReporter();

    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

    /// Whether any benchmark ended in an error.
    bool HasFailed() const
    {
        return m_failed;
    }

private:
    struct Pair
    {
        std::string m_subject;
        double m_floor = 0; ///< seconds; 0 = not run
        double m_measured = 0;
    };

    void Note(const Run& run);
    Pair& Find(const std::string& subject);

    std::vector<Pair> m_pairs; ///< in order of first run
    bool m_failed = false;
};

} // namespace bench
