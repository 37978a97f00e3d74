// Scores births that lie in arrays, a factor as codes: births examples/birth-weight/model.pmml
#include <cstdio>
#include <exception>

#include <velscore.hpp>

int main(int argc, char** argv)
try {
    const auto model = velscore::Model::Open(argc > 1 ? argv[1] : "model.pmml");
    velscore::Binding binding = model.Bind({"race", "ht", "age"});

    const char* const races[] = {"white", "black", "other"};
    const std::vector<int32_t> race{1, 2, 0, 0};
    const std::vector<const char*> hypertension(4, "no");
    const std::vector<double> age{19, 33, 20, 21};
    const velscore::Column columns[] = {{race, races}, velscore::Column(hypertension), {age}};
    const velscore::Scores scores = binding.Score(columns);

    const auto& births = scores.Named("prediction");
    const auto& low = scores.Named("probability(low)");
    std::puts("prediction,probability(low),status");
    for (size_t i = 0; i < age.size(); ++i) {
        std::printf("%s,%.17g,%d\n", binding.Category(births.codes[i]), low.numbers[i],
                    static_cast<int>(scores.status[i]));
    }
} catch (const velscore::Error& error) {
    std::fprintf(stderr, "%s [%d]\n%s\n", error.what(), error.Code(), error.Remedy().c_str());
    return 1;
}
