CREATE TABLE t (a int NOT NULL, b varchar(10) NULL)
CREATE TABLE s (Name int NULL)
