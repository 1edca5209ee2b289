#!/usr/bin/env python3
"""Compares the records of many tables in one bulk run and, as its yardstick, one table after the other.
Usage: bulk_data.py QREL FOLDER TABLES ROWS   (5 columns; one record changed in every tenth table)"""
import os
import subprocess
import sys
import time

qrel, folder, tables, rows = sys.argv[1], sys.argv[2], int(sys.argv[3]), int(sys.argv[4])
os.environ["QREL_HOME"] = folder + "/home"
os.makedirs(folder + "/home", exist_ok=True)

for side in ("a", "b"):
    with open(f"{folder}/{side}.sql", "w") as script:
        for table in range(tables):
            script.write(f"CREATE TABLE T{table:05} (Id int NOT NULL PRIMARY KEY, Customer nvarchar(60) NOT NULL, City varchar(30), "
                         "Amount decimal(12,4), Sold datetime)\nGO\n")
            values = []
            for n in range(1, rows + 1):
                city = "Lisbon" if side == "b" and table % 10 == 7 and n == rows // 2 else "Porto"
                values.append(f"({n},N'Customer number {n} of the shop','{city}',{n % 9973}.{n % 10000:04},"
                              f"'20{n % 25:02}-{n % 12 + 1:02}-{n % 28 + 1:02}')")
            script.write(f"INSERT T{table:05} VALUES " + ",".join(values) + "\nGO\n")
    subprocess.run([qrel, "load", f"bench/{side}", f"{folder}/{side}.sql", "--replace"], check=True, stdout=subprocess.DEVNULL)


def measure(arguments):
    results = []
    for _ in range(3):
        started = time.monotonic()
        child = subprocess.Popen([qrel, "data", "bench/a", "bench/b"] + arguments, stdout=subprocess.DEVNULL)
        _, _, usage = os.wait4(child.pid, 0)
        results.append((time.monotonic() - started, usage.ru_maxrss))
    return sorted(results)[1]


single = [argument for table in range(tables) for argument in ("--table", f"T{table:05}")]
bulk_seconds, bulk_peak = measure(["--all"])
single_seconds, single_peak = measure(single)
print(f"  in one run: {bulk_seconds:.2f} s, peak {bulk_peak / 1024:.0f} MB, {bulk_seconds / single_seconds:.2f} times the yardstick")
print(f"  yardstick, one after the other: {single_seconds:.2f} s, peak {single_peak / 1024:.0f} MB")
