/* An extension for SQLite, as an example of the C interface: rows of arrays, and a binding that is kept
 * from row to row.
 *
 *   velscore(path, name, value, name, value, ...)   the results of a row as JSON
 *
 * Numbers are read as they are, texts as a file's texts, NULL is missing. SQLite keeps the binding with the
 * statement as long as path and names are constants. */
#include <math.h>
#include <stdio.h>
#include <string.h>

#include <sqlite3ext.h>

#include "velscore.h"

SQLITE_EXTENSION_INIT1

enum { kMost = 64 }; /* columns of a row, and results of a model */

struct scorer {
    struct velscore_model* model;
    struct velscore_binding* binding;
    int count;
    char* names[kMost];
};

static void end_scorer(void* own)
{
    struct scorer* scorer = own;
    velscore_unbind(scorer->binding);
    velscore_close(scorer->model);
    for (int i = 0; i < scorer->count; ++i) sqlite3_free(scorer->names[i]);
    sqlite3_free(scorer);
}

static void tell(sqlite3_context* context, struct velscore_error* error)
{
    char* text = sqlite3_mprintf("velscore: %s [%d] %s", error->text, error->code,
                                 error->remedy == NULL ? "" : error->remedy);
    sqlite3_result_error(context, text == NULL ? "velscore: no memory" : text, -1);
    sqlite3_free(text);
    velscore_error_clear(error);
}

static const char* text_of(sqlite3_value* value)
{
    const char* text = (const char*)sqlite3_value_text(value);
    return text == NULL ? "" : text;
}

static struct scorer* make_scorer(sqlite3_context* context, int count, sqlite3_value** arguments)
{
    struct velscore_error error = VELSCORE_ERROR_INIT;
    struct scorer* scorer = sqlite3_malloc(sizeof *scorer);
    if (scorer == NULL) {
        sqlite3_result_error_nomem(context);
        return NULL;
    }
    memset(scorer, 0, sizeof *scorer);
    for (int i = 0; i < count; ++i) {
        scorer->names[i] = sqlite3_mprintf("%s", text_of(arguments[1 + 2 * i]));
        scorer->count = i + 1;
    }
    if (velscore_open(text_of(arguments[0]), NULL, &scorer->model, &error) != 0 ||
        velscore_bind_names(scorer->model, NULL, (const char* const*)scorer->names, (size_t)count,
                            &scorer->binding, &error) != 0) {
        tell(context, &error);
        end_scorer(scorer);
        return NULL;
    }
    return scorer;
}

/* Whether a kept scorer is for these names. */
static int suits(const struct scorer* scorer, int count, sqlite3_value** arguments)
{
    if (scorer == NULL || scorer->count != count) return 0;
    for (int i = 0; i < count; ++i) {
        if (strcmp(scorer->names[i], text_of(arguments[1 + 2 * i])) != 0) return 0;
    }
    return 1;
}

static void put_text(sqlite3_str* json, const char* text)
{
    sqlite3_str_appendchar(json, 1, '"');
    for (const char* c = text; *c != '\0'; ++c) {
        if (*c == '"' || *c == '\\') sqlite3_str_appendchar(json, 1, '\\');
        if ((unsigned char)*c < 0x20) {
            sqlite3_str_appendf(json, "\\u%04x", *c);
        } else {
            sqlite3_str_appendchar(json, 1, *c);
        }
    }
    sqlite3_str_appendchar(json, 1, '"');
}

static void put_number(sqlite3_str* json, double number)
{
    char text[32];
    snprintf(text, sizeof text, "%.17g", number);
    if (isinf(number)) strcpy(text, number > 0 ? "9e999" : "-9e999"); /* as SQLite's JSON has it */
    sqlite3_str_appendall(json, isnan(number) ? "null" : text);
}

static void score(sqlite3_context* context, struct scorer* scorer, sqlite3_value** arguments)
{
    struct velscore_column columns[kMost];
    double numbers[kMost];
    const char* texts[kMost];
    memset(columns, 0, sizeof columns);
    for (int i = 0; i < scorer->count; ++i) {
        sqlite3_value* value = arguments[2 + 2 * i];
        if (sqlite3_value_type(value) == SQLITE_FLOAT) {
            numbers[i] = sqlite3_value_double(value);
            columns[i].numbers = &numbers[i];
        } else { /* a whole number's text has all of its digits */
            texts[i] = (const char*)sqlite3_value_text(value);
            columns[i].texts = &texts[i];
        }
    }

    double values[kMost];
    int32_t codes[kMost];
    struct velscore_result_column places[kMost];
    memset(places, 0, sizeof places);
    int32_t status = 0;
    const char* field = NULL;
    struct velscore_results results = VELSCORE_RESULTS_INIT;
    results.columns = places;
    results.columns_count = velscore_result_count(scorer->binding);
    results.status = &status;
    results.status_field = &field;
    if (results.columns_count > kMost) {
        sqlite3_result_error(context, "velscore: the model has more results than are taken", -1);
        return;
    }
    for (size_t i = 0; i < results.columns_count; ++i) {
        places[i].numbers = &values[i];
        places[i].codes = &codes[i];
    }
    struct velscore_error error = VELSCORE_ERROR_INIT;
    if (velscore_score_columns(scorer->binding, columns, (size_t)scorer->count, 1, &results, &error) != 0) {
        tell(context, &error);
        return;
    }

    sqlite3_str* json = sqlite3_str_new(sqlite3_context_db_handle(context));
    sqlite3_str_appendchar(json, 1, '{');
    for (size_t i = 0; i < results.columns_count; ++i) {
        put_text(json, velscore_result_name(scorer->binding, i));
        sqlite3_str_appendchar(json, 1, ':');
        const char* category = velscore_category(scorer->binding, codes[i]);
        if (category != NULL) {
            put_text(json, category);
        } else {
            put_number(json, values[i]);
        }
        sqlite3_str_appendchar(json, 1, ',');
    }
    sqlite3_str_appendf(json, "\"status\":%d,\"status_field\":", status);
    if (field == NULL) {
        sqlite3_str_appendall(json, "null");
    } else {
        put_text(json, field);
    }
    sqlite3_str_appendchar(json, 1, '}');
    sqlite3_result_text(context, sqlite3_str_finish(json), -1, sqlite3_free);
}

static void velscore(sqlite3_context* context, int count, sqlite3_value** arguments)
{
    const int columns = (count - 1) / 2;
    if (count < 3 || count % 2 == 0 || columns > kMost) {
        sqlite3_result_error(context, "velscore(path, name, value, ...) takes 1 to 64 columns", -1);
        return;
    }
    struct scorer* kept = sqlite3_get_auxdata(context, 0);
    if (suits(kept, columns, arguments)) {
        score(context, kept, arguments);
        return;
    }
    if ((kept = make_scorer(context, columns, arguments)) == NULL) return;
    score(context, kept, arguments);
    sqlite3_set_auxdata(context, 0, kept, end_scorer);
}

int sqlite3_velscoresqlite_init(sqlite3* base, char** error, const sqlite3_api_routines* api)
{
    SQLITE_EXTENSION_INIT2(api);
    (void)error;
    /* Reads files: not from the triggers and views of a database that somebody else made. */
    return sqlite3_create_function(base, "velscore", -1, SQLITE_UTF8 | SQLITE_DIRECTONLY, NULL, velscore,
                                   NULL, NULL);
}
