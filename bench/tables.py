#!/usr/bin/env python3
"""Analyzes and views a made-up table, beside a GROUP BY of sqlite3 for each of its columns.
Usage: tables.py BIN FOLDER ROWS   (BIN is the build's folder)"""
import os
import sqlite3
import subprocess
import sys
import time

binaries, folder, rows = sys.argv[1], sys.argv[2], int(sys.argv[3])
os.environ["QREL_HOME"] = folder + "/tables"
os.makedirs(folder + "/tables", exist_ok=True)
qrel = binaries + "/src/console/qrel"
columns = ("Id", "Customer", "City", "Amount", "Sold")


def records():
    for n in range(1, rows + 1):
        yield (n, f"Customer number {n * 7919 % 20011} of the shop", f"City {n * n % 61}",
               f"{n % 997}.{n % 7:04}", f"20{n % 25:02}-{n % 12 + 1:02}-{n % 28 + 1:02} 00:00:00")


def write_script(path):
    with open(path, "w") as script:
        script.write("CREATE TABLE Sale (Id int NOT NULL PRIMARY KEY, Customer nvarchar(60) NOT NULL, City varchar(30), "
                     "Amount decimal(12,4), Sold datetime)\nGO\n")
        values = []
        for n, customer, city, amount, sold in records():
            values.append(f"({n},N'{customer}','{city}',{amount},'{sold}')")
            if len(values) == 1000:
                script.write("INSERT Sale VALUES " + ",".join(values) + "\nGO\n")
                values = []
        if values:
            script.write("INSERT Sale VALUES " + ",".join(values) + "\nGO\n")


def seconds(name, command):
    results = []
    for _ in range(3):
        started = time.time()
        subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        results.append(time.time() - started)
    print(f"  {name}: {min(results):.2f} s", flush=True)
    return min(results)


script = folder + "/sale.sql"
write_script(script)
subprocess.run([qrel, "load", "bench/tables", script, "--replace"], check=True, stdout=subprocess.DEVNULL)
os.remove(script)
plain = folder + "/sale.sqlite"
if os.path.exists(plain):
    os.remove(plain)
database = sqlite3.connect(plain)
database.execute("CREATE TABLE Sale (Id INTEGER PRIMARY KEY, Customer TEXT, City TEXT, Amount TEXT, Sold TEXT)")
database.executemany("INSERT INTO Sale VALUES (?,?,?,?,?)", records())
database.commit()
database.close()

yardstick = seconds("yardstick, sqlite3 with a GROUP BY for each column", ["sqlite3", plain] + [
    f"SELECT {name}, COUNT(*) AS c FROM Sale GROUP BY {name} ORDER BY c DESC LIMIT 10" for name in columns])
analysis = seconds("qrel analyze", [qrel, "analyze", "bench/tables", "--table", "Sale"])
print(f"  that is {analysis / yardstick:.1f} times")
seconds("qrel view, all rows printed", [qrel, "view", "bench/tables", "--table", "Sale"])
if os.path.exists(binaries + "/bench/bench_tables"):
    subprocess.run([binaries + "/bench/bench_tables", "bench", "tables", "Sale"], stderr=subprocess.DEVNULL)
