#include "host/messages/messages.h"

#include <algorithm>

#include <fmt/args.h>
#include <fmt/format.h>

#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

constexpr char kMendNumber[] =
    "Write a decimal number with a point, an optional sign and an optional exponent.";
constexpr char kMendCase[] =
    "Mend the row, give the field a missingValueReplacement, or choose another --policy.";
constexpr char kMendMatrix[] =
    "Make the rows of the contrast matrix match the categories of its factor.";
constexpr char kHostile[] =
    "Documents of models stay far below this limit; check where the file comes from.";
constexpr char kMendTable[] = "Mend the table and score it again.";
constexpr char kFetchPacked[] =
    "Fetch or compress the table again; gzip -t FILE or zstd -t FILE tells whether it is whole.";
constexpr char kKeepOlderForm[] =
    "Score the document as it is: the older form is read like the published one.";

// Every message, in ascending order of the codes.
constexpr Message kCatalogue[] = {
    {90015, "", "the target's reference category is not among the model's categories",
     "Correct the target category of the document's PCell elements."},
    {90017, "", "a factor's value has no row in its contrast matrix",
     "Score only categories that the model was fitted on."},
    {90028, "", "the linear predictor has no mean under the model's link",
     "Check the case for values outside the range that the model was fitted on."},
    {90029, "", "the case can't be scored: a value is missing or not valid", kMendCase},

    {260115, "ss", "{0} is required in {1} and is not there",
     "Add it at the place named, or export the model again with it."},
    {260117, "ss", "{0} of a {1} is required where outliers are treated as extreme values",
     "Give the field a lowValue, or another outlier treatment."},
    {260118, "ss", "{0} of a {1} is required where outliers are treated as extreme values",
     "Give the field a highValue, or another outlier treatment."},
    {260120, "ss", "{0} is missing in {1}: a Cox model needs its end-time variable",
     "Name the end-time variable in the model."},
    {260121, "sss",
     "{2} has no BaseCumHazardTables, nor an {1} {0}: a Cox model needs its baseline hazard",
     "Export the model with its baseline cumulative hazard."},
    {260124, "ss", "{0} is not in the {1}", "Declare the variable in the dictionary."},
    {260125, "sss", "{0} is neither in the {1} nor in the {2}",
     "Declare the field, or correct its name where the model uses it."},
    {260126, "s", "{0} has a role already, or is categorical without a list of its categories",
     "Name each field once in the mining schema, and list the values of categorical fields."},
    {260127, "ss", "{0} is not a valid value of {1}",
     "Correct the value at the place named: it has to be of the field's type, and one of the "
     "values "
     "that the field lists."},
    {260130, "ss", "{0} and {1} give no predictors", "List the model's factors and covariates."},
    {260131, "ss", "{0} and {1} give no covariates", "List the model's covariates."},
    {260133, "", "the model has no target variable",
     "Give one field of the mining schema the usage type target."},
    {260153, "sss", "{0} was not expected as {1} in {2}",
     "Correct or remove it at the place named: a list holds its own elements alone, an attribute "
     "one of the standard's words, and a factor is categorical or ordinal."},
    {260155, "s", "{0} is used in a cell and is neither a factor nor a covariate",
     "List the field in FactorList or CovariateList."},
    {260161, "s", "{0} is named by the model and is no active field of the mining schema",
     "Add the field to the mining schema as active."},
    {260162, "ss", "the {0} of {1} was refused", kMendMatrix},
    {260178, "sss", "{0} was found where {1} stands in {2}",
     "Correct or remove the element at the place named."},
    {260179, "ssss", "{0} is the {1} of the offset variable {2}; it has to be {3}",
     "Declare the offset variable as continuous."},
    {260180, "sss", "a covariate has to be {0} by its {1}, and {2} is not",
     "Declare the field as continuous, or list it as a factor."},
    {260181, "ss", "the model needs exactly two elements {0} for its target {1}",
     "Declare the two categories of the target."},
    {260184, "sss", "the target has to be {0} by its {1}, and {2} is not",
     "Declare the target as continuous, or mark the model as classification."},
    {260188, "sss", "a covariance cell needs {0} and {1} in a model of type {2}",
     "Name the target categories of both parameters in each PCovCell, or remove the PCovMatrix."},
    {260191, "ss", "a covariance cell can't be placed by its {0} in a model of type {1}",
     "Remove the category from the PCovCell, or remove the PCovMatrix."},
    {260192, "sss",
     "a conditional logistic model ({2}) takes no {0} (by its {1}) and needs the list of its "
     "target's categories",
     "Leave the intercept out and list the target's categories."},
    {260202, "ss",
     "{0} is named as the target and is not the target field that the schema and "
     "the {1} give",
     "Make targetVariableName and the mining schema's target agree."},
    {260204, "s", "{0} is a second target", "Keep one target field in the mining schema."},
    {260214, "ssssss", "{0} values by {1} in an array of the {2}, {3} by {4} of the {5}",
     kMendMatrix},
    {260223, "ss", "the model refused the {0} {1}",
     "Name either a variable or a value, once, and none where the family takes none."},
    {260225, "ss", "the model refused {0} as {1}",
     "Name either a variable or a value, once, and none where the family takes none."},
    {260227, "ss", "the role that the {0} gives {1} was refused",
     "Correct the usageType of the field in the mining schema."},
    {260246, "sssss", "{0} rows by {1}, and {2} elements {3} in {4}", kMendMatrix},
    {260249, "ssss", "{0} rows by {1}, and {2} categories of {3}", kMendMatrix},
    {260251, "ssssss", "{0} reference points ({1}, {2}), and {3} elements {4} in the {5}",
     "Give every parameter a reference point, or none."},
    {260258, "sssss", "the model has no place for {0} ({1}) and {2} ({3}) of a {4}",
     "Correct the names of the cell: both have to be declared."},
    {260281, "ss", "{0} in the {1} says that the model is not to be scored",
     "Use a document of a model that is meant for scoring."},
    {260283, "s", "the {0} is empty", "Export the model with its parameters."},
    {260292, "ss", "a contrast matrix has a row {0}, and {1} has fewer values", kMendMatrix},
    {260302, "ss", "{0} stands in a model of type {1}, which takes no contrasts",
     "Remove the contrast matrix, or export the model with plain factors."},
    {260304, "", "the model can't be set up from its predictors, factors and categories",
     "Check that every predictor is declared and every target category listed."},

    {kNotANumber, "ss", "the {1} '{0}' is not a number", kMendNumber},
    {kNotAnInteger, "ss", "the {1} '{0}' is not a whole number", "Write a whole number."},
    {kNumberTooLarge, "ss", "the {1} '{0}' is too large for a number", kMendNumber},
    {kArrayLength, "dd", "an array has {0} numbers, {1} are expected",
     "Give the array a number for each column of its matrix."},
    {kUnknownEncoding, "s", "the encoding '{0}' is not known", "Use UTF-8."},
    {kDuplicateField, "s", "the field {0} is declared twice", "Declare each field once."},
    {kUnknownDataType, "sss", "'{0}' is no {1} that the standard knows, for the field {2}",
     "Use one of the standard's words, in its own spelling."},
    {kExpressionNotSupported, "ss", "{0} in the derived field {1} is not supported",
     "Compute the field before scoring and give it as a column, with the document naming it in "
     "its data dictionary."},
    {kFunctionNotSupported, "ss", "the function '{0}' in the derived field {1} is not supported",
     "Use a supported function, or compute the field before scoring."},
    {kWrongArgumentCount, "sdss",
     "the function '{0}' takes {2} arguments and has {1} in the derived field {3}",
     "Give the function as many arguments as it takes."},
    {kUnknownFieldReference, "ss", "{0} is used by the derived field {1} and is not declared",
     "Declare the field, or correct its name."},
    {kDerivedFieldCycle, "s", "the derived field {0} depends on itself",
     "Let its expression, and those of the fields that it uses, go without it."},
    {kExpressionMissing, "s", "the derived field {0} has no expression",
     "Give the derived field one expression, such as FieldRef or Apply."},
    {kNormPoints, "s",
     "NormContinuous in the derived field {0} needs two LinearNorm elements or more, their orig "
     "values ascending",
     "List two LinearNorm elements or more by ascending orig, each once."},
    {kExpressionTooDeep, "s",
     "the derived field {0} stands on too long a chain of fields and functions",
     "Shorten the chain of derived fields, or nest fewer functions."},
    {kTooManyDerivedTexts, "ds",
     "the derived fields up to {1} can yield more than {0} texts in all",
     "Refer to fields of many categories in fewer derived fields."},
    {kReferencePointFamily, "ss",
     "the parameter {0} has a reference point, and models of type {1} take none",
     "Remove referencePoint from the parameters."},
    {kModelWithoutTarget, "s", "a model of type {0} needs a target variable",
     "Name the target in the mining schema."},
    {kCallNotAvailable, "s", "this form of {0} is not offered by the reader",
     "Give the reader a parsed document."},
    {kTableTooLarge, "sdd",
     "the {0} of the model would have {1} rows by {2} columns, more than there is room for",
     "Export the model with fewer parameters, or without its covariances."},
    {kTooManyContrastRows, "dds",
     "the contrast matrix of {2} has a row {0}, and {1} rows are declared", kMendMatrix},
    {kOrdinalTarget, "sd",
     "the target {0} of an ordinal model with predictors has {1} categories, and needs two or more",
     "List the target's categories in its DataField, in the order of the scale."},
    {kTargetWithoutCategories, "ss",
     "the target {0} has no categories, and a model of type {1} predicts one",
     "Declare the target as categorical, with its values."},
    {kStorageAndLevel, "sss", "the variable {0} is stored as {1} and can't be {2}",
     "Declare a variable of texts as NOMINAL or ORDINAL."},
    {kAlreadyPublished, "s", "{0} is a PMML document already",
     "Use it as it is: only documents of the older form and RegressionModel documents are "
     "converted."},
    {kUnpairedParameters, "dd",
     "{0} parameters beside (Constant) can't be paired with {1} predictors: a linear regression "
     "pairs them by position",
     "List one parameter for each covariate, in the same order, and call the constant (Constant)."},
    {kFactorOfLinear, "s",
     "the factor {0} of a linear regression counts as a number in the older form alone",
     kKeepOlderForm},
    {kConditionalConstant, "s",
     "the parameter {0} is a constant, and a conditional logistic model takes none in the "
     "published form",
     kKeepOlderForm},
    {kTwoUses, "sss", "{0} is both {1} and {2}, and the published form has one use for a field",
     kKeepOlderForm},
    {kTextsAsNumbers, "ss", "{0} holds texts, and the published form wants numbers of a {1}",
     kKeepOlderForm},
    {kOpenFactor, "s",
     "the factor {0} has texts and no list of its categories: the published form would score it "
     "otherwise",
     "List the factor's categories in the dictionary."},
    {kFactorCell, "ss",
     "a cell names '{0}', which the factor {1} never takes; the published form refuses that",
     "Correct the cell, or declare the value."},
    {kMissingRangeOfList, "s",
     "the missing ranges of {0} can't be said in the published form: they hold a listed value or "
     "every number, or belong to a factor without a list",
     "Declare the missing values one by one, or list the valid ones."},
    {kPublishedFormRefused, "s", "the published form of this document would be refused: {0}",
     kKeepOlderForm},

    {kCaseTextNotANumber, "ssd", "'{0}' in the field {1} of row {2} is not a number", kMendCase},
    {kCaseTextNotADateTime, "ssd",
     "'{0}' in the field {1} of row {2} is no date or time of the "
     "field's type",
     kMendCase},
    {kCaseInvalidValue, "ssd",
     "'{0}' in the field {1} of row {2} is not valid, and the document wants such a case refused",
     kMendCase},
    {kCaseNotReadable, "s", "the row can't be read: {0}",
     "Look at the file of --rejects, which has the row and what is wrong with it."},

    {kCannotRead, "ss", "{0} can't be read: {1}", "Check the file's name and its permissions."},
    {kEmptyDocument, "s", "{0} is empty", "Give a model document."},
    {kNotWellFormed, "sdds", "{0}:{1}:{2}: not well-formed XML: {3}",
     "Mend the document at that place, or export it again."},
    {kDoctype, "sdd", "{0}:{1}:{2}: a document type declaration is not accepted",
     "Remove the DOCTYPE; model documents need none."},
    {kTooDeep, "sddd", "{0}:{1}:{2}: elements are nested more than {3} deep", kHostile},
    {kTooManyAttributes, "sddd", "{0}:{1}:{2}: more than {3} attributes on one element", kHostile},
    {kTokenTooLong, "sddd", "{0}:{1}:{2}: a tag, comment or instruction of more than {3} bytes",
     kHostile},
    {kTooManyElements, "sddd",
     "{0}:{1}:{2}: more than {3} elements, instructions and CDATA sections", kHostile},
    {kDocumentTooLarge, "sd", "{0} has more than {1} bytes", kHostile},
    {kNotAModelDocument, "ss", "{0} is no model document: its root is '{1}'",
     "Give a PMML document with a GeneralRegressionModel."},

    {kNotOfDataType, "sss", "'{0}' is no value of the type {1}, in the derived field {2}",
     "Write a value of that type, or correct the dataType."},
    {kDuplicateFunction, "s", "the function '{0}' is defined twice, or is a built-in one",
     "Give each function a name of its own."},
    {kFunctionCycle, "s", "the function '{0}' calls itself",
     "Write the function without recursion; the standard has none."},
    {kBadPattern, "ssss",
     "'{0}' is no pattern for the function '{1}': {2}, in the derived field {3}",
     "Use a regular expression without look-around and references back, or a format of one "
     "number."},
    {kTooManyPatterns, "ds", "the derived fields up to {1} use more than {0} patterns", kHostile},
    {kTooManySteps, "ds",
     "a case would take more than {0} steps of expressions up to the derived field {1}",
     "Call functions that call functions less often, or compute the field before scoring."},
    {kTableLocator, "s",
     "the derived field {0} maps by a table outside of the document (TableLocator)",
     "Export the model with the table inside (InlineTable)."},
    {kMapCellMissing, "ss", "a row has no cell {0}, in the MapValues of the derived field {1}",
     "Give every row a cell for each column."},
    {kMapColumnTwice, "ss", "the column {0} stands twice in the MapValues of the derived field {1}",
     "Give each field a column of its own."},
    {kMapWithoutColumns, "s", "the MapValues of the derived field {0} has no FieldColumnPair",
     "Name the field that the table is looked up by."},

    {kTextTooLong, "sddd",
     "{0}:{1}:{2}: more than {3} bytes between one tag and the next, from this element on",
     kHostile},
    {kTooManyNames, "sddd", "{0}:{1}:{2}: more than {3} different names of elements and attributes",
     kHostile},
    {kUndeclaredPrefix, "ss", "the prefix '{0}' of {1} is not declared",
     "Declare the prefix on the root element, with the namespace of PMML, or write the names "
     "without one."},

    {kUnknownNormalization, "s", "the normalizationMethod '{0}' is unknown",
     "The standard has none, simplemax, softmax, logit, probit, cloglog, exp, loglog and cauchit, "
     "in small letters."},
    {kNormalizationNotTaken, "ss", "the normalizationMethod {0} is not read for {1}",
     "docs/documents.md lists the pairs that are; export the model as one of them."},
    {kTableWithoutCategory, "d",
     "a RegressionTable has no targetCategory, and nobody can tell the {0} tables apart",
     "Name the category of the target that each table belongs to."},
    {kUnknownTableCategory, "sss", "the targetCategory '{0}' is none of the categories of {1}: {2}",
     "Name a category as the target's field lists it, or list it there."},
    {kTableTwice, "s", "two RegressionTables have the targetCategory '{0}'",
     "Keep the one that belongs to the category."},
    {kTablesMissing, "ss",
     "the target's category {0} has no RegressionTable, which the normalizationMethod {1} needs",
     "Write a table for each category, an empty one where its equation is 0."},
    {kTableCount, "d", "a regression has {0} RegressionTables without categories; it takes one",
     "Keep the one of the regression, or give each a targetCategory with functionName "
     "classification."},
    {kNotFinite, "sss", "'{0}' is no finite number ({1} of {2})",
     "Write a decimal number with a point, such as 12.5 or 1e-3."},
    {kUnknownTermField, "ss", "{1} names the field '{0}', which nothing declares",
     "Declare it in the DataDictionary or as a DerivedField, in the same spelling."},
    {kTextInEquation, "sss", "{2} reads the field {0} as a number; its dataType is {1}",
     "Use a CategoricalPredictor, or derive a number from the field with NormDiscrete."},
    {kUnknownFunctionName, "s", "the functionName '{0}' is none of a RegressionModel",
     "It is regression or classification."},
    {kModelBeside, "s", "beside the RegressionModel the document holds a {0}",
     "Keep the model that is to be scored alone in its document."},
    {kUnexpectedTableElement, "ss", "{1} holds {0}, which has no place there",
     "A RegressionTable holds NumericPredictor, CategoricalPredictor and PredictorTerm, and the "
     "latter FieldRef."},
    {kMisspeltAttribute, "sss", "the attribute '{0}' of {1} is unknown; did you mean {2}?",
     "Spell it so, or give it a prefix of its own when it is meant for another program."},
    {kEmptyFirstTable, "ss",
     "the first of two RegressionTables, of '{0}', is empty; with normalizationMethod {1} it alone "
     "decides, and every case would get the same probability",
     "Put the table with the coefficients first, or use softmax."},
    {kNoTargetField, "s", "no MiningField of the {0} has usageType target",
     "Mark the field that the model predicts: usageType=\"target\"."},
    {kTargetFieldsDiffer, "ss",
     "targetFieldName is '{0}', while the mining schema marks '{1}' as the target",
     "Name the same field in both places."},

    {kNoOutputSection, "s", "{0} has no Output section, whose columns were asked for",
     "Score with the default columns, or add an Output section to the model."},
    {kOutputFeature, "ss",
     "the feature '{0}' of the output field {1} is none that a regression has",
     "Score with the default columns, or remove the field from the Output section."},
    {kNoVerification, "s", "{0} has no ModelVerification section",
     "Verify a document that carries records of its own, or add some with --emit."},
    {kVerificationField, "ss",
     "{0} in the ModelVerification section of {1} is neither an output field nor the target nor a "
     "field of the data dictionary",
     "Correct the field's name."},
    {kTooManyRecords, "ss", "{0} has more than {1} cases that a document could carry as records",
     "Give fewer cases."},

    {kSeveralSlopes, "s",
     "parameter {0} has different betas for different categories: an ordinal model has one, and "
     "only its thresholds differ",
     "Export the model as multinomialLogistic, or give the parameter one beta."},
    {kContrastsTooLarge, "sd", "the contrast matrix of {0} has more than {1} numbers",
     "Export the model with indicator variables."},
    {kOtherModel, "s",
     "the document holds a {0}; velscore reads GeneralRegressionModel, and RegressionModel without "
     "--as-is",
     "Export the model as one of these, where its program can; of a model made of several, each in "
     "a document of its own."},

    {kDocumentFault, "ss", "{0} [{1}]",
     "velscore check shows every fault of the document; --allow with a rule's name scores it all "
     "the "
     "same."},

    {kPluginNotLoaded, "ss", "the plug-in {0} can't be loaded: {1}",
     "Install velscore whole, or name the plug-in with --plugin."},
    {kPluginNoEntry, "ss", "{0} is no plug-in: it has no {1}", "Name another with --plugin."},

    {kCasesNotRead, "ss", "{0} can't be read: {1}", "Check the file's name and its permissions."},
    {kNoHeader, "s", "{0} has no header: it is empty, or begins with a blank line",
     "Give a table whose first row names its columns; with --no-header, one that has a row."},
    {kMissingColumn, "sss", "{0} has no column '{1}', which the model needs; it has {2}",
     "Add the column, rename the one that holds it, or tell which one it is: --map NAME=COLUMN."},
    {kRowLength, "sddd", "{0}: row {1} has {2} fields, the header {3}", kMendTable},
    {kUnclosedQuote, "sd", "{0}: row {1} opens a quote that is never closed", kMendTable},
    {kNulByte, "sd", "{0}: row {1} holds a NUL byte; the table has to be text in UTF-8",
     kMendTable},
    {kDuplicateColumn, "ss", "{0} has the column '{1}' twice", "Give each column its own name."},
    {kStrayQuote, "sd",
     "{0}: row {1} has a quote inside a field, or text after a closing quote; a quote in a quoted "
     "field is written twice",
     kMendTable},
    {kFieldTooLong, "sdd", "{0}: row {1} has a field of more than {2} bytes; is a quote open?",
     kMendTable},
    {kOutputNotWritten, "ss", "{0} can't be written: {1}",
     "Name a file that may be written, in a folder that is there and lets files be made: until it "
     "is whole, a temporary one stands beside it."},
    {kUnknownKeptColumn, "ss", "'{0}' is to be kept, and is no column of {1}",
     "Name columns of the table, or 'all'."},
    {kOutputFull, "ss", "{0} can't be written: {1}",
     "Make room or choose another place, and start again."},
    {kTableCut, "sd",
     "{0} changed its size while it was read, and its last row {1} has no line end: it may be half "
     "a row",
     "Wait until the table is written whole, and score it again."},
    {kRowTooLong, "sdd", "{0}: row {1} has more than {2} bytes; is a line end lacking?",
     kMendTable},
    {kTooManyColumns, "sd", "{0} has more than {1} columns; is a line end lacking?", kMendTable},
    {kNoTextTable, "ss", "{0} is {1}; a table of cases is text in UTF-8",
     "Give comma-separated values with a header, or JSON Lines."},
    {kUnknownResultColumn, "ss", "--columns names '{0}'; the columns of this model are: {1}",
     "Name some of these; 'probabilities' stands for those of all categories."},
    {kResultColumnTwice, "s", "--columns names '{0}' twice", "Name each column once."},
    {kPackedCut, "sss",
     "{0} is compressed by {1} and ends too early, after what unpacks to {2} bytes", kFetchPacked},
    {kPackedDamaged, "ssss",
     "{0} is compressed by {1} and damaged, behind what unpacks to {2} bytes: {3}", kFetchPacked},
    {kPackedRest, "sss",
     "{0} is compressed by {1} and goes on with something else, behind what unpacks to {2} bytes",
     "Remove what follows the compressed table, or compress the table again."},
    {kPackedWindow, "ss",
     "{0} is compressed by zstd with a window of more than {1} MiB, which would all be held in "
     "memory",
     "Compress the table with a smaller window (without --long and --ultra), or unpack it on the "
     "way: zstd -dc --long=31 FILE | velscore COMMAND MODEL -"},
    {kPackedDictionary, "s", "{0} is compressed by zstd with a dictionary, which isn't there",
     "Compress the table without a dictionary, or unpack it on the way: zstd -dc -D DICTIONARY "
     "FILE | velscore COMMAND MODEL -"},
    {kOtherHeader, "sdsss", "{0} has {2} where {3} has {4}: column {1} of the tables differs",
     "Give tables of the same columns in the same order, or score each by itself."},
    {kRowEncoding, "sd", "{0}: row {1} holds text that isn't UTF-8", kMendTable},
    {kTooManyRejects, "dsd", "{1}: row {2} would be rejected, one more than the {0} allowed",
     "Mend the table, or allow more with --max-rejects."},
    {kUnknownMappedName, "ss", "--map names '{0}', which the model doesn't read; it reads {1}",
     "Give --map NAME=COLUMN with the model's own name first."},
    {kColumnsWithoutHeader, "sdds",
     "{0} has {1} columns, the model needs {2}: {3}; without a header they have to be these, in "
     "this order",
     "Tell which column is which by its number: --map NAME=1."},
    {kTableColumnTaken, "s", "--name-column is '{0}', which is a column of the results",
     "Give it another name."},
    {kOtherRun, "ss", "{0} is of another run: its {1} differs",
     "Give the run's own model, tables and options, or leave --resume out to begin anew."},

    {kSurvivalTime, "ss", "{0} has the time '{1}'; expected is a number of 0 or more",
     "Give times in the unit of the model's end time: 365, or 0.5."},
    {kTooManySurvivalTimes, "sss", "{0} asks for {1} times; {2} are the most",
     "Ask for fewer times, or for some of them in each of several runs."},
    {kNoJsonObject, "sds", "{0}: row {1} isn't a JSON object on a line of its own: {2}",
     "Mend the table and score it again; an object over several lines has to be written in one."},
    {kNestedValue, "sds",
     "{0}: row {1} has an object or an array under '{2}', where one value is expected",
     "Write a string, a number, true, false or null there."},
    {kKeyTwice, "sds", "{0}: row {1} has the key '{2}' twice", kMendTable},
    {kOptionOfCsv, "ss",
     "{0} has no meaning for {1}: that table is JSON Lines, where keys name the values",
     "Leave the option out; --out-delimiter tells the delimiter of the output."},
    {kOtherTableForm, "ssss", "{0} is {1}, {2} {3}",
     "Give tables of one form, or score each by itself."},
    {kDelimiterIsDecimal, "ss", "the delimiter and the decimal mark of {0} are both '{1}'",
     "Give the fields another delimiter: --delimiter ';'."},
    {kOutputKeyTwice, "s", "a row of the output would have the key '{0}' twice",
     "Write comma-separated values (--format csv), or leave out --output document."},

    {kArrowStructure, "ss", "the Arrow data of {0} can't be read: {1}",
     "Hand over what the producer exports, unchanged, and each structure once."},
    {kArrowType, "ss", "column '{0}' is of Arrow's type {1}, which isn't taken",
     "Cast the column to numbers, texts, truth values, dates or times."},
    {kArrowStream, "s", "the Arrow stream gives no further rows: {0}",
     "Ask the producer of the stream."},
    {kArrowTooDeep, "sd", "column '{0}' has types within types deeper than {1}",
     "Keep a simpler column."},

    {kNullArgument, "s", "the argument '{0}' is a null pointer",
     "Hand over what the header velscore.h asks for."},
    {kStructSize, "sdd", "{0} has a size of {1}; the library knows {2} bytes of it",
     "Set its size to sizeof, and use a library that isn't older than the header."},
    {kOptionValue, "sss", "the option '{0}' is '{1}'; expected is {2}", "Correct the option."},
    {kNoCurves, "ss", "{0} has no survival curves: its family is {1}",
     "Ask for curves of Cox models alone."},
    {kNoLevel, "ss", "the option 'level' has no meaning: {0} {1}", "Leave the option out."},
    {kPolicyIgnored, "ss", "the policy '{0}' has no meaning for {1}: that model ignores it",
     "Take the policy sysmis."},
    {kRowNotScored, "sss", "row {0} has no score: status {1}, field '{2}'",
     "Mend the row, or leave the option strict out and read the column status."},
    {kColumnCount, "sdd", "{0}: {1} columns were given, expected are {2}",
     "Give a column for each name that was bound, or result that there is."},
    {kColumnPointers, "s", "column '{0}' needs either numbers, or texts, or codes with their texts",
     "Set one of the pointers, and the count of the texts."},
    {kOutOfMemory, "s", "there is no memory left for {0}", "Score fewer rows at once."},
    {kDefect, "s", "something went wrong that shouldn't: {0}",
     "Tell the makers of velscore what was called."},
    {kNotAllowed, "ss", "the rule '{0}' can't be allowed: {1}", "Correct the option 'allow'."},
};

static_assert(std::is_sorted(std::begin(kCatalogue), std::end(kCatalogue),
                             [](const Message& a, const Message& b) { return a.code < b.code; }));

// Models that predict no category make one up, for the one row of their betas, and a refusal of a
// cell names it. No document has it, so there is nothing to show.
constexpr std::string_view kMadeUpCategories[] = {"LRdummy", "GLRdummy", "GZLRdummy",
                                                  "CoxRegDummy"};

// An argument as its place in the text shows it. What stands in quotes is seen as it is.
std::string Shown(const std::string& argument, std::string_view text, size_t position)
{
    if (std::find(std::begin(kMadeUpCategories), std::end(kMadeUpCategories), argument) !=
        std::end(kMadeUpCategories)) {
        return "(none)";
    }
    const bool quoted = text.find(fmt::format("'{{{}}}'", position)) != std::string_view::npos;
    if (quoted || !TrimBlanks(argument).empty()) return argument;
    return argument.empty() ? "(empty)" : "(blanks)";
}

}  // namespace

std::span<const Message> Messages::All() { return kCatalogue; }

const Message* Messages::Find(int code)
{
    const auto* row =
        std::lower_bound(std::begin(kCatalogue), std::end(kCatalogue), code,
                         [](const Message& message, int wanted) { return message.code < wanted; });
    return row != std::end(kCatalogue) && row->code == code ? row : nullptr;
}

namespace {

// Between quotes nothing would be seen: an empty argument is told as a word without them.
void DropQuotes(std::string& text, size_t argument)
{
    const std::string quoted = fmt::format("'{{{}}}'", argument);
    const size_t at = text.find(quoted);
    if (at != std::string::npos) text.replace(at, quoted.size(), quoted, 1, quoted.size() - 2);
}

}  // namespace

std::string Messages::Format(int code, const std::vector<std::string>& arguments)
{
    const Message* row = Find(code);
    if (row == nullptr) return fmt::format("no message has the code {}", code);
    std::string text(row->text);
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i].empty()) DropQuotes(text, i);
    }
    fmt::dynamic_format_arg_store<fmt::format_context> store;
    for (size_t i = 0; i < arguments.size(); ++i) store.push_back(Shown(arguments[i], text, i));
    // A caller that gives too few arguments sees empty places, not an exception.
    const size_t expected = std::string_view(row->arguments).size();
    for (size_t i = arguments.size(); i < expected; ++i) store.push_back("");
    return fmt::vformat(text, store);
}

std::vector<std::string> Messages::ReadArguments(int code, va_list arguments)
{
    std::vector<std::string> texts;
    const Message* row = Find(code);
    if (row == nullptr) return texts;
    for (const char* kind = row->arguments; *kind != '\0'; ++kind) {
        std::string text;
        if (*kind == 's') {
            const char* given = va_arg(arguments, const char*);
            text = given == nullptr ? "" : given;
        } else if (*kind == 'd') {
            text = std::to_string(va_arg(arguments, int));
        } else {
            AppendNumber(va_arg(arguments, double), text);
        }
        texts.push_back(std::move(text));
    }
    return texts;
}

}  // namespace MCVelscore_850
