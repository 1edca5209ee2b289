CREATE TABLE t (a int NOT NULL, b varchar(10) NULL)
CREATE TABLE s (Name int NULL)
CREATE TABLE w (a int NULL, b bit NULL, z int NULL)
