#include "rows.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>
#include <utility>

namespace {

constexpr int kRounds = 21;
constexpr int kFewRounds = 7; // of what takes long
constexpr Nanoseconds kBatch = 1e6;
constexpr Nanoseconds kLong = 3e6;

double Median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

// A work with the number of times that make a batch, and its time in each round.
struct Timed {
    explicit Timed(const Work &theWork) : work(&theWork)
    {
        work->time(3); // what the first times cost is nobody's question here
        for (Nanoseconds taken = Least(); taken < kBatch; taken = Least())
            count *= taken < kBatch / 8 ? 4 : 2;
    }

    // Of three, so that a busy machine does not pass for a slow work.
    Nanoseconds Least() const
    {
        return std::min({work->time(count), work->time(count), work->time(count)});
    }

    void Round() { times.push_back(work->time(count) / static_cast<double>(count)); }

    const Work *work;
    size_t count = 1;
    std::vector<Nanoseconds> times;
};

void RunRounds(std::vector<Timed> &works)
{
    int rounds = kRounds;
    for (const Timed &timed : works) {
        if (timed.count == 1 && timed.Least() > kLong)
            rounds = kFewRounds;
    }
    for (int round = 0; round < rounds; round++) {
        for (Timed &timed : works)
            timed.Round();
    }
}

double Ratio(const Timed &ours, const Timed &other)
{
    std::vector<double> ratios;
    for (size_t i = 0; i < ours.times.size(); i++)
        ratios.push_back(ours.times[i] / other.times[i]);
    return Median(ratios);
}

// Three digits of a ratio, or so.
std::string Text(double ratio)
{
    char text[32];
    snprintf(text, sizeof text, "%.*f", ratio < 0.1 ? 4 : ratio < 10 ? 2 : 0, ratio);
    return text;
}

// The least time of all rounds: what cannot be paired is told by its quietest moment.
Nanoseconds TimeOf(const Work &work)
{
    std::vector<Timed> works = {Timed(work)};
    RunRounds(works);
    return *std::min_element(works[0].times.begin(), works[0].times.end());
}

void TellGrowth(const std::string &question, const std::string &few, Nanoseconds withFew,
                const std::string &many, Nanoseconds withMany, double factor)
{
    printf("growth\t%s\t%s\t%.4g\t%s\t%.4g\t%.2f\n", question.c_str(), few.c_str(), withFew,
           many.c_str(), withMany, factor);
    fflush(stdout);
}

} // namespace

void Row(const std::string &operation, const std::string &bound, const Work &ours, const Work &bare,
         const std::vector<Work> &peers)
{
    std::vector<Timed> works = {Timed(ours), Timed(bare)};
    for (const Work &peer : peers)
        works.emplace_back(peer);
    RunRounds(works);
    printf("row\t%s\t%.4g\t%s\t%.4g\t%s", operation.c_str(), Median(works[0].times),
           bare.name.c_str(), Median(works[1].times), Text(Ratio(works[0], works[1])).c_str());
    if (peers.empty()) {
        printf("\t-\t-\t-");
    } else {
        const auto best =
            std::min_element(works.begin() + 2, works.end(), [](const Timed &a, const Timed &b) {
                return Median(a.times) < Median(b.times);
            });
        printf("\t%s\t%.4g\t%s", best->work->name.c_str(), Median(best->times),
               Text(Ratio(works[0], *best)).c_str());
    }
    printf("\t%s\n", bound.c_str());
    fflush(stdout);
}

void Growth(const std::string &question, const std::string &few, const Work &withFew,
            const std::string &many, const Work &withMany)
{
    std::vector<Timed> works = {Timed(withFew), Timed(withMany)};
    RunRounds(works);
    TellGrowth(question, few, Median(works[0].times), many, Median(works[1].times),
               Ratio(works[1], works[0]));
}

GrowthOf::GrowthOf(std::string question, std::string few, Work work)
    : question_(std::move(question)), few_(std::move(few)), work_(std::move(work)),
      before_(TimeOf(work_))
{
}

void GrowthOf::Then(const std::string &many)
{
    const Nanoseconds after = TimeOf(work_);
    TellGrowth(question_, few_, before_, many, after, after / before_);
}

double ResidentBytes()
{
    long total = 0, resident = 0;
    if (FILE *status = fopen("/proc/self/statm", "r")) {
        if (fscanf(status, "%ld %ld", &total, &resident) != 2)
            resident = 0;
        fclose(status);
    }
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

void Memory(const std::string &what, double bytes)
{
    printf("memory\t%s\t%.0f\n", what.c_str(), bytes);
    fflush(stdout);
}
