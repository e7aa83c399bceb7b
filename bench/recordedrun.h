#ifndef VANTIX_BENCH_RECORDEDRUN_H
#define VANTIX_BENCH_RECORDEDRUN_H

#include <map>
#include <string>
#include <vector>

namespace VantixBench {

/// One figure of the summary, as the regression check sees it.
struct Figure
{
    std::string key; ///< "<group>/<row label>", stable from run to run
    double value = 0;
    std::string
        unit; ///< "s", "KiB", "1/s", "ratio" (to the figure's in-run baseline); figures compare only in the same unit
    bool higherIsBetter = false;
    double noise = 0; ///< how far, as a fraction, the figure moves between runs without a change
};

/**
 * The figures of the run last recorded (bench/recorded.json): what each new
 * run is compared with. A figure worse than its record by more than its
 * noise gets a warning; figures new or missing on either side, or recorded
 * in another unit, are skipped.
 */
class RecordedRun
{
public:
    /// False (with @p error) when the file is missing or unreadable; an empty record then.
    bool load(const std::string &path, std::string *error);
    bool isEmpty() const { return m_values.empty(); }
    const std::string &date() const { return m_date; }

    /// "WARNING: <key> is worse than the recorded run by X% (noise Y%)", one per regression.
    std::vector<std::string> compare(const std::vector<Figure> &figures) const;
    /// How many of @p figures have a record to be compared with.
    int comparable(const std::vector<Figure> &figures) const;

    /// Writes @p figures over the record (others stay as they were), stamped with @p date and @p load.
    bool save(const std::string &path, const std::vector<Figure> &figures, const std::string &date,
        const std::string &load, std::string *error) const;

private:
    struct Recorded
    {
        double value = 0;
        std::string unit;
    };
    std::map<std::string, Recorded> m_values;
    std::string m_date;
};

} // namespace VantixBench

#endif
