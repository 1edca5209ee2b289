CREATE TABLE Orders (Id int NOT NULL, Note varchar(20) NULL, Stamp datetime NULL)
CREATE TABLE OneSide (Id int NOT NULL, Extra int NULL)
CREATE TABLE Plain (Id int NOT NULL)
