CREATE TABLE Orders (Id int NOT NULL, Note varchar(50) NOT NULL)
CREATE TABLE OneSide (Id int NOT NULL, Extra int NULL)
CREATE TABLE Plain (Id int NOT NULL)
