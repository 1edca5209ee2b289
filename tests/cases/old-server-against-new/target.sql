CREATE TABLE plain (a int NOT NULL, b int NULL)
CREATE TABLE ordered (b int NULL, a int NOT NULL)
CREATE TABLE withDefault (a int NOT NULL, b int NULL CONSTRAINT dfB DEFAULT 1)
