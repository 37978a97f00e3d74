.mode list
.import --csv ../motor-cars/cases.csv cars
SELECT json_extract(velscore('../motor-cars/model.pmml', 'cyl', cyl, 'am', am, 'wt', wt, 'hp', hp), '$.prediction')
FROM cars;
.import --csv ../birth-weight/cases.csv births
SELECT s ->> 'prediction', s ->> 'probability(low)', s ->> 'status'
FROM (SELECT velscore('../birth-weight/model.pmml', 'race', race, 'ht', ht, 'age', CAST(age AS REAL)) AS s FROM births);
SELECT s ->> 'prediction' IS NULL, s ->> 'status', s ->> 'status_field'
FROM (SELECT velscore('../birth-weight/model.pmml', 'race', NULL, 'ht', 'no', 'age', 30) AS s);
SELECT velscore('../birth-weight/model.pmml', 'race', 'white');
SELECT velscore('no such file', 'race', 'white');
SELECT velscore('../birth-weight/model.pmml');
