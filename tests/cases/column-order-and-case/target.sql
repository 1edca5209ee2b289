CREATE TABLE t (b varchar(10) NULL, a int NOT NULL, c int NULL)
CREATE TABLE s (name int NULL)
ALTER TABLE t DROP COLUMN c
CREATE TABLE w (b bit NULL, a int NULL, z int NULL)
