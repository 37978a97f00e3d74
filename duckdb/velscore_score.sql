-- velscore_score(document, source): the rows of a source with the columns of results beside them. The
-- source is a text, whatever may follow FROM: 'cases', '''cases.parquet''', '(SELECT ...)'.
--
-- Run it once in a database, or once in a session as CREATE TEMP MACRO. The extension can't do it when it
-- is loaded: an extension's macro would lie in the user's own database.
CREATE OR REPLACE MACRO velscore_score(document, source) AS TABLE
    SELECT velscore_row.*, unnest(velscore(document, velscore_row))
    FROM query('FROM ' || source) AS velscore_row;

-- velscore_terms(document, source): the same with how the linear predictors add up, a line for each term of
-- each equation of each row; none of a row without a score.
CREATE OR REPLACE MACRO velscore_terms(document, source) AS TABLE
    SELECT velscore_row.*, unnest(velscore_explain(document, velscore_row), recursive := true)
    FROM query('FROM ' || source) AS velscore_row;
