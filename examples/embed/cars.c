/* Scores three cars that lie in arrays: cars examples/motor-cars/model.pmml */
#include <stdio.h>

#include <velscore.h>

int main(int argc, char** argv)
{
    static const char* const names[] = {"cyl", "am", "wt", "hp"};
    static const char* const cyl[] = {"6", "6", "4"};
    static const char* const am[] = {"manual", "manual", "manual"};
    static const double wt[] = {2.62, 2.875, 2.32}, hp[] = {110, 110, 93};
    const struct velscore_column columns[] = {
        {.texts = cyl}, {.texts = am}, {.numbers = wt}, {.numbers = hp}};
    static const char* const wanted[] = {"prediction", "std_dev"};
    double prediction[3], deviation[3];
    int32_t status[3];
    const struct velscore_result_column places[] = {{.numbers = prediction}, {.numbers = deviation}};
    struct velscore_score_options options = VELSCORE_SCORE_OPTIONS_INIT;
    struct velscore_results results = VELSCORE_RESULTS_INIT;
    struct velscore_error error = VELSCORE_ERROR_INIT;
    struct velscore_model* model = NULL;
    struct velscore_binding* binding = NULL;
    options.columns = wanted;
    options.columns_count = 2;
    results.columns = places;
    results.columns_count = 2;
    results.status = status;
    const int code = velscore_open(argc > 1 ? argv[1] : "model.pmml", NULL, &model, &error) ||
                     velscore_bind_names(model, &options, names, 4, &binding, &error) ||
                     velscore_score_columns(binding, columns, 4, 3, &results, &error);
    if (code == 0) puts("prediction,std_dev,status");
    for (int i = 0; code == 0 && i < 3; ++i)
        printf("%.17g,%.17g,%d\n", prediction[i], deviation[i], (int)status[i]);
    if (code != 0) fprintf(stderr, "%s [%d]\n%s\n", error.text, error.code, error.remedy);
    velscore_error_clear(&error);
    velscore_unbind(binding);
    velscore_close(model);
    return code;
}
