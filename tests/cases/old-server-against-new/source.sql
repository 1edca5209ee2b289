CREATE TABLE plain (a int NOT NULL, b int NULL)
CREATE TABLE ordered (a int NOT NULL, b int NULL)
CREATE TABLE withDefault (a int NOT NULL, b int NULL CONSTRAINT dfB DEFAULT 1)
