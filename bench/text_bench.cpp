// Questions: what does a number cost on its way out of a table's text, and into one? Each row is a
// column of numbers as tables hold them; beside ours stand std::from_chars and std::to_chars on
// the same numbers in the same run, and the ratio is the figure to keep.
//
//   plain     ReadPlainNumber(), and ReadNumber() where that says no
//   in room   the same by ReadPlainNumberInRoom()
//   at once   the same by ReadPlainNumbersInRoom(), 500 numbers at a time
//   write     WriteNumber()
//
// The texts of a column lie side by side, as in a file. Times are of batches of a thousand;
// medians.
//
//   text_bench [BATCHES]

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "bench/timing.h"
#include "engine/tables/plainnumber.h"
#include "host/values/numbertext.h"

using namespace MCVelscore_850;
using namespace MCVelscore_850::bench;

namespace {

// More than a processor learns by heart: with a thousand it foresees each one's branches.
constexpr size_t kNumbers = 50000;
constexpr size_t kAtOnce = 500;

using Draw = double (*)(double uniform, std::mt19937_64& random);

// What a column holds: numbers, drawn from a uniform one, and the form they are written in.
struct Kind {
    const char* name;
    const char* format;
    Draw draw;
};

const Kind kKinds[] = {
    {"codes 0 to 4", "{:.0f}", [](double u, auto&) { return std::floor(5.0 * u); }},
    {"ages", "{:.0f}", [](double u, auto&) { return 18.0 + std::floor(80.0 * u); }},
    {"whole, 1 to 9 digits", "{:.0f}",
     [](double u, auto&) { return std::floor(std::exp(20.0 * u)); }},
    {"amounts, 2 decimals", "{}",
     [](double u, auto&) { return std::round(1e2 * std::exp(10.0 * u)) / 1e2; }},
    {"thousandths", "{}", [](double u, auto&) { return std::round(1e5 * u) / 1e3; }},
    {"6 digits", "{:.6g}", [](double u, auto&) { return std::exp(10.0 * u); }},
    {"15 digits", "{:.15g}", [](double u, auto&) { return u; }},
    {"probabilities", "{}", [](double u, auto&) { return u; }},
    {"predictions", "{}", [](double u, auto&) { return 200.0 * (u - 0.5); }},
    {"any size", "{}",
     [](double u, auto& random) { return std::ldexp(u, static_cast<int>(random() % 400) - 200); }},
};

class Column {
public:
    explicit Column(const Kind& kind)
    {
        std::mt19937_64 random(850);
        std::uniform_real_distribution<> uniform(0.0, 1.0);
        std::vector<size_t> begins;
        for (size_t i = 0; i < kNumbers; ++i) {
            numbers.push_back(kind.draw(uniform(random), random));
            begins.push_back(bytes_.size());
            fmt::format_to(std::back_inserter(bytes_), fmt::runtime(kind.format), numbers.back());
            bytes_ += ',';
        }
        begins.push_back(bytes_.size());
        bytes_.append(kPlainNumberRoom, '\n');
        for (size_t i = 0; i < kNumbers; ++i) {
            texts.push_back(
                std::string_view(bytes_).substr(begins[i], begins[i + 1] - begins[i] - 1));
        }
        for (size_t i = 0; i < kNumbers; i += kAtOnce) {
            parts.push_back(std::span(texts).subspan(i, kAtOnce));
        }
    }
    Column(const Column&) = delete;
    Column& operator=(const Column&) = delete;

    std::vector<double> numbers;
    std::vector<std::string_view> texts;
    std::vector<std::span<const std::string_view>> parts;  // the same

private:
    std::string bytes_;
};

double ReadByStandard(std::string_view text)
{
    double number = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

double ReadPlain(std::string_view text)
{
    double number = 0.0;
    if (!ReadPlainNumber(text, '.', number)) ReadNumber(text, number);
    return number;
}

double ReadInRoom(std::string_view text)
{
    double number = 0.0;
    if (!ReadPlainNumberInRoom(text, '.', number)) ReadNumber(text, number);
    return number;
}

using Numbers = std::array<double, kAtOnce>;

void ReadAtOnce(std::span<const std::string_view> texts, Numbers& numbers)
{
    uint64_t unread[kAtOnce / 64 + 1] = {};
    ReadPlainNumbersInRoom(texts.data(), 1, texts.size(), '.', numbers.data(), unread);
    for (size_t i = 0; i < texts.size(); ++i) {
        if (((unread[i / 64] >> (i % 64)) & 1U) != 0) ReadNumber(texts[i], numbers[i]);
    }
}

double ReadPart(std::span<const std::string_view> texts)
{
    Numbers numbers;
    ReadAtOnce(texts, numbers);
    return numbers.front() + numbers.back();
}

double WriteByStandard(double number)
{
    char text[kNumberRoom];
    return static_cast<double>(std::to_chars(text, std::end(text), number).ptr - text);
}

double Write(double number)
{
    char text[kNumberRoom];
    return static_cast<double>(WriteNumber(number, text));
}

// Nanoseconds a value, the median of batches over all of them.
template <class Values, class Call>
double Median(int batches, const Values& values, Call call)
{
    std::vector<double> times;
    double sink = 0.0;
    for (int batch = 0; batch < batches; ++batch) {
        const auto begin = std::chrono::steady_clock::now();
        for (const auto& value : values) sink += call(value);
        const std::chrono::duration<double, std::nano> time =
            std::chrono::steady_clock::now() - begin;
        times.push_back(time.count() / static_cast<double>(values.size()));
    }
    volatile double kept = sink;  // the work has to be done
    (void)kept;
    std::sort(times.begin(), times.end());
    return At(times, 0.5);
}

}  // namespace

int main(int argc, char** argv)
{
    const int batches = argc > 1 ? std::atoi(argv[1]) : 60;
    if (batches < 1) {
        std::fprintf(stderr, "usage: %s [BATCHES]\n", argv[0]);
        return 1;
    }
    std::printf(
        "%s, compiler %s\nns a number, medians of %d batches of %zu\n\n%-22s %10s %8s %8s "
        "%8s %6s %10s %8s %6s\n",
        Cpu().c_str(), __VERSION__, batches, kNumbers, "", "from_chars", "plain", "in room",
        "at once", "ratio", "to_chars", "write", "ratio");
    for (const Kind& kind : kKinds) {
        const Column column(kind);
        for (const std::string_view text : column.texts) {
            if (ReadPlain(text) != ReadByStandard(text) || ReadInRoom(text) != ReadPlain(text)) {
                std::fprintf(stderr, "%s reads differently\n", std::string(text).c_str());
                return 1;
            }
        }
        for (const auto& part : column.parts) {
            Numbers numbers;
            ReadAtOnce(part, numbers);
            if (!std::equal(part.begin(), part.end(), numbers.begin(),
                            [](auto text, double number) { return ReadPlain(text) == number; })) {
                std::fprintf(stderr, "%s: at once they read differently\n", kind.name);
                return 1;
            }
        }
        const double fromChars = Median(batches, column.texts, ReadByStandard);
        const double plain = Median(batches, column.texts, ReadPlain);
        const double inRoom = Median(batches, column.texts, ReadInRoom);
        const double atOnce = Median(batches, column.parts, ReadPart) / kAtOnce;
        const double toChars = Median(batches, column.numbers, WriteByStandard);
        const double write = Median(batches, column.numbers, Write);
        std::printf("%-22s %10.1f %8.1f %8.1f %8.1f %6.2f %10.1f %8.1f %6.2f\n", kind.name,
                    fromChars, plain, inRoom, atOnce, atOnce / fromChars, toChars, write,
                    write / toChars);
    }
}
