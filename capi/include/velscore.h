/** @file
 * libvelscore: scores tables with regression models that are read from documents.
 *
 * Results    every function that can fail answers 0, or the code of what is wrong; `velscore help
 *            CODE` explains each. `error` may be null; else it is filled as velscore_error tells.
 *            Nothing is written to out parameters on a failure, but for what says so here.
 * Threads    a model that is open serves any number of threads at once. A binding, a stream and an
 *            error serve one thread at a time.
 * Ownership  what a function makes, its caller ends: models by velscore_close, bindings by
 *            velscore_unbind, texts by velscore_free, Arrow's structures by their own release.
 *            Arrow's structures that were made here outlive the model and the binding; streams need
 *            their model open.
 * Texts      are UTF-8 and end with a null byte.
 * Versions   structures begin with their size. They grow at their end in later versions, so a
 *            program that was built with an older header works with a newer library; what a program
 *            sets that the library doesn't know is refused.
 */
#ifndef VELSCORE_H
#define VELSCORE_H

#include <stddef.h>
#include <stdint.h>

#include "velscore_arrow.h"

/** What the library shows. */
#if defined(__GNUC__)
#define VELSCORE_API __attribute__((visibility("default")))
#else
#define VELSCORE_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** The version of the library that is running, "1.2.3"; a constant. Any thread. */
VELSCORE_API const char* velscore_version(void);

/* ---- Errors ---------------------------------------------------------------------------------- */

/** At whose door a failure lies. */
enum velscore_fault {
    VELSCORE_FAULT_NONE = 0,     /**< nothing failed */
    VELSCORE_FAULT_CALL = 1,     /**< arguments and options */
    VELSCORE_FAULT_DOCUMENT = 2, /**< the model's document */
    VELSCORE_FAULT_TABLE = 3,    /**< the table of cases */
    VELSCORE_FAULT_OTHER = 70    /**< no memory left, or a defect of the library */
};

/** What went wrong. Begin with VELSCORE_ERROR_INIT; each call that fails replaces what is told, and
 * one that doesn't empties it. The texts belong to the structure: velscore_error_clear ends them.
 */
struct velscore_error {
    size_t size;          /**< of the structure */
    int code;             /**< as the function answers */
    int fault;            /**< enum velscore_fault */
    char* text;           /**< what was found, and where; null where there was no memory for it */
    char* remedy;         /**< what can be done; null or a sentence */
    char* file;           /**< the document or table, null where none is to blame */
    char* element;        /**< the path of the document's element; null where it isn't known */
    unsigned long line;   /**< from 1; 0 where it isn't known */
    unsigned long column; /**< the same */
    char* field;          /**< the column of the table; null where none is to blame */
    unsigned long row;    /**< of the table, from 1; 0 where none is to blame */
};
/** Sets the size of a velscore_error, and all else to 0 and null. */
#define VELSCORE_ERROR_INIT                                                        \
    {                                                                              \
        sizeof(struct velscore_error), 0, 0, NULL, NULL, NULL, NULL, 0, 0, NULL, 0 \
    }

/** Frees the texts and leaves the structure empty, to be used again. Null is let be. */
VELSCORE_API void velscore_error_clear(struct velscore_error* error);

/** Frees a text that a function gave. Null is let be. Any thread. */
VELSCORE_API void velscore_free(char* text);

/* ---- Models ---------------------------------------------------------------------------------- */

struct velscore_model;

/** How a document is read. Begin with VELSCORE_OPTIONS_INIT. */
struct velscore_options {
    size_t size;      /**< of the structure */
    int as_is;        /**< not 0: without looking for faults, and without the adaptations to what
                           other programs export */
    const char* name; /**< how messages call a document of velscore_open_text; null: "document" */
    /** Names of rules whose faults are taken for notices, as velscore_check tells them; none beside
     * as_is. */
    const char* const* allow;
    size_t allow_count; /**< of these */
};
/** Sets the size of a velscore_options, and all else to 0 and null. */
#define VELSCORE_OPTIONS_INIT                             \
    {                                                     \
        sizeof(struct velscore_options), 0, NULL, NULL, 0 \
    }

/** Reads the model of a file, unless its document has a fault. `options` may be null. The path "-"
 * is a file of that name, not standard input. Any thread. */
VELSCORE_API int velscore_open(const char* path, const struct velscore_options* options,
                               struct velscore_model** out, struct velscore_error* error);

/** The same of bytes, which are copied. Any thread. */
VELSCORE_API int velscore_open_text(const char* bytes, size_t size,
                                    const struct velscore_options* options,
                                    struct velscore_model** out, struct velscore_error* error);

/** Ends a model, which no binding and no stream may use any more. Null is let be. */
VELSCORE_API void velscore_close(struct velscore_model* model);

/** What the model is, and what was adapted and noticed in its document, as `velscore inspect
 * --json` says it. Any thread. */
VELSCORE_API int velscore_describe(const struct velscore_model* model, char** json,
                                   struct velscore_error* error);

/** Whether a document can be read, and what was found and adapted in it, as `velscore check --json`
 * says it of one document. A document that is refused is no failure of this function: the report
 * says why. Any thread. */
VELSCORE_API int velscore_check(const char* path, const struct velscore_options* options,
                                char** json, struct velscore_error* error);

/** The same of bytes; the report calls the document by the name of `options`. Any thread. */
VELSCORE_API int velscore_check_text(const char* bytes, size_t size,
                                     const struct velscore_options* options, char** json,
                                     struct velscore_error* error);

/** Scores the records that the document carries and compares, as `velscore verify --json` says it.
 * The document is read again. Any thread. */
VELSCORE_API int velscore_verify(const struct velscore_model* model, char** json,
                                 struct velscore_error* error);

/* ---- Scoring --------------------------------------------------------------------------------- */

/** What is asked of the results. Begin with VELSCORE_SCORE_OPTIONS_INIT; null and 0 are defaults.
 * What it points to is read during the call alone. */
struct velscore_score_options {
    size_t size;             /**< of the structure */
    const char* const* keep; /**< columns of the table to repeat in front of the results */
    size_t keep_count;       /**< of these */
    int keep_all;            /**< not 0: all of them */
    /** Results by name, in this order; "probabilities" for all of them. */
    const char* const* columns;
    size_t columns_count; /**< of these */
    int prediction_only;  /**< not 0: the prediction and nothing else */
    const char* nan;      /**< "missing", the default, or "invalid": what a NaN of the table is */
    const char* policy;   /**< "substitute", "sysmis" or "status"; the document's own by default */
    double level;         /**< of confidence limits, above 0 and below 1; 0.95 by default */
    int strict;           /**< not 0: a row without a score is a failure */
    const char* const* missing;     /**< texts that mean missing, beside the empty one */
    size_t missing_count;           /**< of these */
    const char* const* map_fields;  /**< the model's fields whose columns have another name */
    const char* const* map_columns; /**< the names of these columns in the table */
    size_t map_count;               /**< of these pairs */
    /* What follows is of explanations alone. */
    const size_t*
        top; /**< list so many terms of an equation, the largest contributions; null: all */
    /** Contributions are differences from a case of these tables; null: none. Taken over, whatever
     * the answer, and read during the call. */
    struct ArrowArrayStream* baseline;
    int64_t baseline_row; /**< that case's row, from 1; 0: the mean of all that have a score */
};
/** Sets the size of a velscore_score_options, and all else to 0 and null. */
#define VELSCORE_SCORE_OPTIONS_INIT                                                              \
    {                                                                                            \
        sizeof(struct velscore_score_options), NULL, 0, 0, NULL, 0, 0, NULL, NULL, 0.0, 0, NULL, \
            0, NULL, NULL, 0, NULL, NULL, 0                                                      \
    }

/** The schema of the results without kept columns: a struct of numbers (float64), categories
 * (dictionary of utf8), status (int32, never null) and status_field (dictionary of utf8). A row
 * without a score has nulls. Any thread. */
VELSCORE_API int velscore_result_schema(const struct velscore_model* model,
                                        const struct velscore_score_options* options,
                                        struct ArrowSchema* out, struct velscore_error* error);

/** Scores a stream of tables: `out` gives kept columns and results, row for row in their order.
 * Large tables come out in parts. `in` is taken over, whatever the answer: the stream is moved into
 * the library, and released with `out`, or at once on a failure. Rows are read and scored by
 * whoever calls get_next of `out`, on that thread; a failure there is told by get_last_error of
 * `out`, with its code and remedy. Columns that the model reads may be any integers, float32 or 64,
 * bool, utf8 of any layout, date, time, timestamp, decimal of 128 or 256 bits, null, and
 * dictionaries of these; others are refused by name at once. Kept columns may be of any type. The
 * model is to stay open as long as `out`. */
VELSCORE_API int velscore_score(const struct velscore_model* model,
                                const struct velscore_score_options* options,
                                struct ArrowArrayStream* in, struct ArrowArrayStream* out,
                                struct velscore_error* error);

/** Survival curves of the rows of a stream, of Cox models alone: columns row (int64, from 1), time,
 * survival and cum_hazard (float64), a line for each time of each row. A row without a curve has
 * one line of nulls. Of the options missing, map, nan, policy and strict have a meaning; the table
 * needs no end time. All else as velscore_score. */
VELSCORE_API int velscore_curve(const struct velscore_model* model,
                                const struct velscore_score_options* options,
                                struct ArrowArrayStream* in, struct ArrowArrayStream* out,
                                struct velscore_error* error);

/** How the linear predictors of the rows of a stream add up: columns row (int64, from 1), equation
 * and term (dictionaries of utf8), value and contribution (float64), a line for each term of each
 * equation of each row. The contributions of an equation, added up in their order by one addition
 * of doubles each, are its linear predictor to the last bit, the sign of a zero apart. The equation
 * is null where the model has one alone; a row without a score has one line of nulls. With `top`
 * the largest contributions come first, by size, and the others are one line, "other terms", which
 * is what the linear predictor is beyond the listed ones. With `baseline` contributions are
 * differences from that case's, or from the means of all cases, and so is what they add up to; the
 * options that say how tables are read count for both. Of the options missing, map, nan, policy,
 * strict, top, baseline and baseline_row have a meaning. All else as velscore_score. */
VELSCORE_API int velscore_explain(const struct velscore_model* model,
                                  const struct velscore_score_options* options,
                                  struct ArrowArrayStream* in, struct ArrowArrayStream* out,
                                  struct velscore_error* error);

/** How files of tables are scanned, beside the options of scores. Begin with
 * VELSCORE_CSV_OPTIONS_INIT. */
struct velscore_csv_options {
    size_t size;                                /**< of the structure */
    const struct velscore_score_options* score; /**< null: the defaults; nan has no meaning */
    const char* delimiter;                      /**< one byte; null: a comma */
    const char* decimal;                        /**< one byte; null: a point */
    int no_header;                              /**< not 0: columns are the model's in its order */
    size_t threads; /**< 0: as many as the process may use, and never more */
};
/** Sets the size of a velscore_csv_options, and all else to 0 and null. */
#define VELSCORE_CSV_OPTIONS_INIT                                   \
    {                                                               \
        sizeof(struct velscore_csv_options), NULL, NULL, NULL, 0, 0 \
    }

/** Scores the table of a file, comma-separated values or JSON Lines, compressed by gzip or zstd or
 * not: `out` gives the results as velscore_score does, kept columns as utf8. What the file's header
 * lacks is told at once; a fault further on by get_next of `out`, after the rows before it. Blocks
 * are scored side by side on threads of the library's own during calls of get_next alone. The model
 * is to stay open as long as `out`. */
VELSCORE_API int velscore_scan_csv(const struct velscore_model* model, const char* path,
                                   const struct velscore_csv_options* options,
                                   struct ArrowArrayStream* out, struct velscore_error* error);

/* ---- Bindings: columns found once, for small tables and single rows -------------------------- */

struct velscore_binding;

/** Binds the columns of tables of a schema, a struct, which is only read. The model is to stay open
 * as long as the binding. Any thread. */
VELSCORE_API int velscore_bind(const struct velscore_model* model,
                               const struct velscore_score_options* options,
                               const struct ArrowSchema* schema, struct velscore_binding** out,
                               struct velscore_error* error);

/** The same of plain arrays, for velscore_score_columns: the names of their columns. Nothing can be
 * kept. Any thread. */
VELSCORE_API int velscore_bind_names(const struct velscore_model* model,
                                     const struct velscore_score_options* options,
                                     const char* const* names, size_t count,
                                     struct velscore_binding** out, struct velscore_error* error);

/** Ends a binding. Null is let be. */
VELSCORE_API void velscore_unbind(struct velscore_binding* binding);

/** Makes a binding as it was when it was made, for another table: the next scored row settles for a
 * model what a first row does, and rows count from 1 again. Null is let be. */
VELSCORE_API void velscore_begin_table(struct velscore_binding* binding);

/** The schema of what velscore_score_batch gives, kept columns too. */
VELSCORE_API int velscore_binding_schema(const struct velscore_binding* binding,
                                         struct ArrowSchema* out, struct velscore_error* error);

/** Scores one table, of a binding of velscore_bind. `in` is taken over, whatever the answer, since
 * kept columns are handed on without a copy. What the first scored row settles for a model holds
 * for the tables after it: a binding answers as one table would. */
VELSCORE_API int velscore_score_batch(struct velscore_binding* binding, struct ArrowArray* in,
                                      struct ArrowArray* out, struct velscore_error* error);

/** A column of plain arrays, of a value a row; one of numbers, texts and codes is set. All is only
 * read, during the call. */
struct velscore_column {
    const double* numbers;         /**< dates and times count as the model's field does */
    const char* const* texts;      /**< null or empty: missing */
    const int32_t* codes;          /**< indexes into `categories`; any other number is missing */
    const char* const* categories; /**< the texts of codes */
    size_t categories_count;       /**< of these */
    /** A bit a row, least first, 0 for a missing value; null: all are there. */
    const uint8_t* present;
};

/** Where a column of results goes; null pointers aren't wanted. Each has room for the rows. Where a
 * row has no value its bit is 0, its number NaN and its code -1. */
struct velscore_result_column {
    double* numbers;  /**< of a column of numbers */
    int32_t* codes;   /**< of one of categories: indexes for velscore_category */
    uint8_t* present; /**< a bit a row, least first; of (rows + 7) / 8 bytes */
};

/** Where results go. Begin with VELSCORE_RESULTS_INIT. */
struct velscore_results {
    size_t size;                                  /**< of the structure */
    const struct velscore_result_column* columns; /**< in the order of velscore_result_name */
    size_t columns_count;                         /**< of these; 0 where none is wanted */
    int32_t* status;           /**< 0, or the code why a row has no score; may be null */
    const char** status_field; /**< the field at fault or null; may be null. Texts of the binding */
};
/** Sets the size of a velscore_results, and all else to 0 and null. */
#define VELSCORE_RESULTS_INIT                                \
    {                                                        \
        sizeof(struct velscore_results), NULL, 0, NULL, NULL \
    }

/** Scores rows of plain arrays, of a binding of velscore_bind_names: `columns` has one for each of
 * its names. Results that were written before a failure mean nothing. */
VELSCORE_API int velscore_score_columns(struct velscore_binding* binding,
                                        const struct velscore_column* columns, size_t columns_count,
                                        size_t rows, const struct velscore_results* results,
                                        struct velscore_error* error);

/** How many columns of results of a binding hold values, status and status_field apart. */
VELSCORE_API size_t velscore_result_count(const struct velscore_binding* binding);

/** The name of one of them, from 0 and in their order, which stands as long as the binding; null
 * beyond the last. */
VELSCORE_API const char* velscore_result_name(const struct velscore_binding* binding, size_t index);

/** The category of a code in results, a text that stands until the binding scores again; null for
 * what is no code. */
VELSCORE_API const char* velscore_category(const struct velscore_binding* binding, int32_t code);

#ifdef __cplusplus
}
#endif

#endif
