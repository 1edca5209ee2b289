#!/usr/bin/env python3
"""Compares two made-up databases as a whole and `diff -rq` over the same texts as files.
Usage: whole_database.py QREL FOLDER SCALE   (SCALE 1: 2,000 procedures of 200 lines and 500 tables, 5% changed)"""
import os
import resource
import subprocess
import sys
import time

qrel, folder, scale = sys.argv[1], sys.argv[2], float(sys.argv[3])
procedures, tables = int(2000 * scale), int(500 * scale)
os.environ["QREL_HOME"] = folder + "/home"
os.makedirs(folder + "/home", exist_ok=True)


def procedure(n, changed):
    lines = [f"CREATE PROCEDURE dbo.Proc{n:05} @a INT AS"]
    lines += [f"    SELECT column_{i}, {n} FROM dbo.T{i % 97:05} WHERE id = @a + {i}" for i in range(198)]
    lines.append("    RETURN 2" if changed else "    RETURN 1")
    return "\r\n".join(lines)


def table(n, changed):
    columns = [f"    c{i} VARCHAR(40) NULL" for i in range(1, 20)]
    if changed:
        columns[9] = "    c10 VARCHAR(50) NULL"
    return (f"CREATE TABLE dbo.T{n:05} (\r\n    id INT NOT NULL CONSTRAINT PK_T{n:05} PRIMARY KEY,\r\n" + ",\r\n".join(columns) +
            f")\r\nCREATE INDEX IX1_{n:05} ON dbo.T{n:05} (c1)\r\nCREATE INDEX IX2_{n:05} ON dbo.T{n:05} (c2, c3)")


for side in ("a", "b"):
    os.makedirs(f"{folder}/{side}", exist_ok=True)
    with open(f"{folder}/{side}.sql", "w", newline="") as script:
        for kind, count, make in (("t", tables, table), ("p", procedures, procedure)):
            for n in range(count):
                text = make(n, side == "b" and n % 20 == 7)
                script.write(text + "\r\nGO\r\n")
                with open(f"{folder}/{side}/{kind}{n}", "w", newline="") as file:
                    file.write(text)
    subprocess.run([qrel, "load", f"bench/{side}", f"{folder}/{side}.sql", "--replace"], check=True, stdout=subprocess.DEVNULL)


def timed(command):
    start = time.monotonic()
    subprocess.run(command, stdout=subprocess.DEVNULL)
    return time.monotonic() - start


for types in ("procedures", "tables", "tables,procedures", "constraints"):
    runs = sorted(timed([qrel, "compare", "bench/a", "bench/b", "--types", types]) for _ in range(3))
    objects = (procedures if "proc" in types else 0) + (tables if "tab" in types or "cons" in types else 0)
    print(f"  {types}: {objects} objects in {runs[1]:.2f} s, {objects / runs[1]:.0f} objects/s")
peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
runs = sorted(timed(["diff", "-rq", f"{folder}/a", f"{folder}/b"]) for _ in range(3))
print(f"  peak memory of any step, loading included: {peak / 1024:.0f} MB")
print(f"  yardstick, diff -rq over the same texts as files: {runs[1]:.2f} s")
