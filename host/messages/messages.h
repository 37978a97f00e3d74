#ifndef VELSCORE_HOST_MESSAGES_MESSAGES_H
#define VELSCORE_HOST_MESSAGES_MESSAGES_H

#include <cstdarg>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/export.h"

namespace MCVelscore_850 {

/// One row of the message catalogue.
struct Message {
    int code;
    /// The kinds of the arguments in order: 's' a C string, 'd' an int, 'g' a double.
    const char* arguments;
    /// The text, with {0}, {1}, ... for the arguments.
    const char* text;
    /// What the user can do about it.
    const char* remedy;
};

/// The catalogue: every code that a document, a case, a table or a run can end with.
class VELHOST_API Messages {
public:
    /// In ascending order of the codes.
    static std::span<const Message> All();
    /// The row of a code, null for an unknown one.
    static const Message* Find(int code);
    /// The code's text with its arguments in place; for an unknown code a text that says so. What
    /// can't be seen, an empty name, is shown as a word.
    static std::string Format(int code, const std::vector<std::string>& arguments);
    /// The arguments as text, read by the kinds in the code's row.
    static std::vector<std::string> ReadArguments(int code, va_list arguments);
};

// Codes of refusals that the host and the readers of models share; those of the readers alone stand
// with them.
inline constexpr int kAbsent = 260115;             // element or attribute, parent
inline constexpr int kNotInDictionaries = 260125;  // name, dictionary tag, transformation tag
inline constexpr int kInvalidValue = 260127;       // value, name
inline constexpr int kUnexpectedWord = 260153;     // text, tag, tag

// Codes of the host's own refusals, in documents.
inline constexpr int kNotANumber = 269001;               // text, holder
inline constexpr int kNotAnInteger = 269002;             // text, holder
inline constexpr int kNumberTooLarge = 269003;           // text, holder
inline constexpr int kArrayLength = 269004;              // found, expected
inline constexpr int kUnknownEncoding = 269005;          // name
inline constexpr int kDuplicateField = 269006;           // name
inline constexpr int kUnknownDataType = 269007;          // text, attribute, name
inline constexpr int kExpressionNotSupported = 269008;   // element, derived field
inline constexpr int kFunctionNotSupported = 269009;     // function, derived field
inline constexpr int kWrongArgumentCount = 269010;       // function, found, expected, derived field
inline constexpr int kUnknownFieldReference = 269011;    // name, derived field
inline constexpr int kDerivedFieldCycle = 269012;        // derived field
inline constexpr int kExpressionMissing = 269013;        // derived field
inline constexpr int kNormPoints = 269014;               // derived field
inline constexpr int kExpressionTooDeep = 269015;        // derived field
inline constexpr int kTooManyDerivedTexts = 269016;      // limit, derived field
inline constexpr int kReferencePointFamily = 269021;     // parameter, model type
inline constexpr int kModelWithoutTarget = 269022;       // model type
inline constexpr int kCallNotAvailable = 269023;         // operation
inline constexpr int kTableTooLarge = 269024;            // section, rows, columns
inline constexpr int kTooManyContrastRows = 269025;      // row, rows declared, predictor
inline constexpr int kOrdinalTarget = 269026;            // target, categories
inline constexpr int kTargetWithoutCategories = 269027;  // target, model type
inline constexpr int kStorageAndLevel = 269028;          // variable, storage type, level

// Codes of the engine: what the published form can't say of a document in the older one.
inline constexpr int kAlreadyPublished = 269030;      // file
inline constexpr int kUnpairedParameters = 269031;    // parameters, predictors
inline constexpr int kFactorOfLinear = 269032;        // factor
inline constexpr int kConditionalConstant = 269033;   // parameter
inline constexpr int kTwoUses = 269034;               // variable, use, use
inline constexpr int kTextsAsNumbers = 269035;        // variable, use
inline constexpr int kOpenFactor = 269036;            // factor
inline constexpr int kFactorCell = 269037;            // value, factor
inline constexpr int kMissingRangeOfList = 269038;    // variable
inline constexpr int kPublishedFormRefused = 269039;  // reason

// Codes of a case that the engine refuses before a model sees it; they stand in column status.
inline constexpr int kCaseTextNotANumber = 269050;    // text, field, row
inline constexpr int kCaseTextNotADateTime = 269051;  // text, field, row
inline constexpr int kCaseInvalidValue = 269052;      // text, field, row
inline constexpr int kCaseNotReadable = 269053;       // reason

// Codes of the engine: the document's bytes.
inline constexpr int kCannotRead = 269101;         // file, reason
inline constexpr int kEmptyDocument = 269102;      // file
inline constexpr int kNotWellFormed = 269103;      // file, line, column, reason
inline constexpr int kDoctype = 269104;            // file, line, column
inline constexpr int kTooDeep = 269105;            // file, line, column, limit
inline constexpr int kTooManyAttributes = 269106;  // file, line, column, limit
inline constexpr int kTokenTooLong = 269107;       // file, line, column, limit
inline constexpr int kTooManyElements = 269108;    // file, line, column, limit
inline constexpr int kDocumentTooLarge = 269109;   // file, limit
inline constexpr int kNotAModelDocument = 269110;  // file, root

// Codes of the host's own refusals: the expressions of derived fields.
inline constexpr int kNotOfDataType = 269111;      // text, data type, derived field
inline constexpr int kDuplicateFunction = 269112;  // function
inline constexpr int kFunctionCycle = 269113;      // function
inline constexpr int kBadPattern = 269114;         // text, function, reason, derived field
inline constexpr int kTooManyPatterns = 269115;    // limit, derived field
inline constexpr int kTooManySteps = 269116;       // limit, derived field
inline constexpr int kTableLocator = 269117;       // derived field
inline constexpr int kMapCellMissing = 269118;     // column, derived field
inline constexpr int kMapColumnTwice = 269119;     // column, derived field
inline constexpr int kMapWithoutColumns = 269120;  // derived field

// Codes of the engine: the document's bytes, continued.
inline constexpr int kTextTooLong = 269141;       // file, line, column, limit
inline constexpr int kTooManyNames = 269142;      // file, line, column, limit
inline constexpr int kUndeclaredPrefix = 269143;  // prefix, element

// Codes of the engine: a RegressionModel that can't be translated into the general form.
inline constexpr int kUnknownNormalization = 269171;    // text
inline constexpr int kNormalizationNotTaken = 269172;   // normalization, what it is to normalize
inline constexpr int kTableWithoutCategory = 269173;    // tables
inline constexpr int kUnknownTableCategory = 269174;    // category, target, its categories
inline constexpr int kTableTwice = 269175;              // category
inline constexpr int kTablesMissing = 269176;           // categories without, normalization
inline constexpr int kTableCount = 269177;              // found
inline constexpr int kNotFinite = 269178;               // text, attribute, element
inline constexpr int kUnknownTermField = 269179;        // name, element
inline constexpr int kTextInEquation = 269180;          // field, data type, element
inline constexpr int kUnknownFunctionName = 269181;     // text
inline constexpr int kModelBeside = 269182;             // element
inline constexpr int kUnexpectedTableElement = 269183;  // element, parent
inline constexpr int kMisspeltAttribute = 269184;       // attribute, element, near one
inline constexpr int kEmptyFirstTable = 269185;         // category, normalization
inline constexpr int kNoTargetField = 269186;           // element
inline constexpr int kTargetFieldsDiffer = 269187;      // attribute's, mining schema's

// Codes of the engine: the document's output and its records.
inline constexpr int kNoOutputSection = 269191;    // file
inline constexpr int kOutputFeature = 269192;      // feature, output field
inline constexpr int kNoVerification = 269193;     // file
inline constexpr int kVerificationField = 269194;  // field, file
inline constexpr int kTooManyRecords = 269195;     // file, limit

// Codes of the engine: what no adaptation can put right.
inline constexpr int kSeveralSlopes = 269196;      // parameter
inline constexpr int kContrastsTooLarge = 269197;  // factor, limit
inline constexpr int kOtherModel = 269198;         // what the document holds

// Codes of the engine: the audit.
inline constexpr int kDocumentFault = 269199;  // what is wrong, rule

// Codes of the engine: the plug-in.
inline constexpr int kPluginNotLoaded = 269201;  // file, reason
inline constexpr int kPluginNoEntry = 269202;    // file, entry

// Codes of the engine: the table of cases and the output.
inline constexpr int kCasesNotRead = 269301;          // file, reason
inline constexpr int kNoHeader = 269302;              // file
inline constexpr int kMissingColumn = 269303;         // file, column, columns found
inline constexpr int kRowLength = 269304;             // file, row, found, expected
inline constexpr int kUnclosedQuote = 269305;         // file, row
inline constexpr int kNulByte = 269306;               // file, row
inline constexpr int kDuplicateColumn = 269307;       // file, column
inline constexpr int kStrayQuote = 269308;            // file, row
inline constexpr int kFieldTooLong = 269309;          // file, row, limit
inline constexpr int kOutputNotWritten = 269310;      // file, reason
inline constexpr int kUnknownKeptColumn = 269311;     // column, file
inline constexpr int kOutputFull = 269312;            // file, reason
inline constexpr int kTableCut = 269313;              // file, row
inline constexpr int kRowTooLong = 269314;            // file, row, limit
inline constexpr int kTooManyColumns = 269315;        // file, limit
inline constexpr int kNoTextTable = 269316;           // file, what it is
inline constexpr int kUnknownResultColumn = 269317;   // column, the columns that there are
inline constexpr int kResultColumnTwice = 269318;     // column
inline constexpr int kPackedCut = 269319;             // file, compression, bytes unpacked
inline constexpr int kPackedDamaged = 269320;         // file, compression, bytes unpacked, reason
inline constexpr int kPackedRest = 269321;            // file, compression, bytes unpacked
inline constexpr int kPackedWindow = 269322;          // file, limit
inline constexpr int kPackedDictionary = 269323;      // file
inline constexpr int kOtherHeader = 269324;           // file, place, column, first file, its column
inline constexpr int kRowEncoding = 269325;           // file, row
inline constexpr int kTooManyRejects = 269326;        // limit, file, row
inline constexpr int kUnknownMappedName = 269327;     // name, the model's fields
inline constexpr int kColumnsWithoutHeader = 269328;  // file, columns, columns needed, their names
inline constexpr int kTableColumnTaken = 269329;      // column
inline constexpr int kOtherRun = 269330;              // note, what differs
inline constexpr int kSurvivalTime = 269331;          // option, text
inline constexpr int kTooManySurvivalTimes = 269332;  // option, times, limit

// Of them those of JSON Lines.
inline constexpr int kNoJsonObject = 269340;    // file, row, why
inline constexpr int kNestedValue = 269341;     // file, row, key
inline constexpr int kKeyTwice = 269342;        // file, row, key
inline constexpr int kOptionOfCsv = 269343;     // option, file
inline constexpr int kOtherTableForm = 269344;  // file, form, first file, its form

// And of both forms.
inline constexpr int kDelimiterIsDecimal = 269345;  // file, character
inline constexpr int kOutputKeyTwice = 269346;      // column

// Codes of the engine: tables in memory, as Arrow's C data interface has them.
inline constexpr int kArrowStructure = 269350;  // column or table, what is wrong
inline constexpr int kArrowType = 269351;       // column, its type
inline constexpr int kArrowStream = 269352;     // what its producer says
inline constexpr int kArrowTooDeep = 269353;    // column, limit

// Codes of the library: how it is called.
inline constexpr int kNullArgument = 269401;    // argument
inline constexpr int kStructSize = 269402;      // structure, size found, size known
inline constexpr int kOptionValue = 269403;     // option, value, what is expected
inline constexpr int kNoCurves = 269404;        // file, family
inline constexpr int kNoLevel = 269405;         // file, why
inline constexpr int kPolicyIgnored = 269406;   // policy, family
inline constexpr int kRowNotScored = 269407;    // row, status, field
inline constexpr int kColumnCount = 269408;     // what for, found, expected
inline constexpr int kColumnPointers = 269409;  // column
inline constexpr int kOutOfMemory = 269410;     // what for
inline constexpr int kDefect = 269411;          // what was thrown
inline constexpr int kNotAllowed = 269412;      // rule, why

}  // namespace MCVelscore_850

#endif
