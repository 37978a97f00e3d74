/* The header and the library as a program in plain C meets them. */

#include "capi/include/velscore.h"

#include <math.h>
#include <string.h>

/* Opens, binds, scores a row, ends. Answers 0, or the number of the step that failed. */
int ScoreInPlainC(const char* document);

int ScoreInPlainC(const char* document)
{
    const char* names[] = {"x", "sex"};
    const char* categories[] = {"f", "m"};
    double x = 3.0;
    int32_t sex = 1;
    double prediction = 0.0;
    int32_t status = -1;
    struct velscore_error error = VELSCORE_ERROR_INIT;
    struct velscore_options options = VELSCORE_OPTIONS_INIT;
    struct velscore_score_options score = VELSCORE_SCORE_OPTIONS_INIT;
    struct velscore_csv_options csv = VELSCORE_CSV_OPTIONS_INIT;
    struct velscore_results results = VELSCORE_RESULTS_INIT;
    struct velscore_result_column column = {NULL, NULL, NULL};
    struct velscore_column columns[2];
    struct velscore_model* model = NULL;
    struct velscore_binding* binding = NULL;
    int step = 0;

    (void)csv;
    memset(columns, 0, sizeof columns);
    columns[0].numbers = &x;
    columns[1].codes = &sex;
    columns[1].categories = categories;
    columns[1].categories_count = 2;
    column.numbers = &prediction;
    score.prediction_only = 1;
    results.columns = &column;
    results.columns_count = 1;
    results.status = &status;
    if (velscore_open_text(document, strlen(document), &options, &model, &error) != 0) {
        step = 1;
    } else if (velscore_bind_names(model, &score, names, 2, &binding, &error) != 0) {
        step = 2;
    } else if (velscore_score_columns(binding, columns, 2, 1, &results, &error) != 0) {
        step = 3;
    } else if (status != 0 || fabs(prediction - 17.0) > 0.0) { /* 1 + 2 * 3 + 10 */
        step = 4;
    }
    velscore_unbind(binding);
    velscore_close(model);
    velscore_error_clear(&error);
    return step;
}
