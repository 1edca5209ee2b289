#!/usr/bin/env python3
"""Compares the records of two made-up tables by key and by position, beside sqldiff and diff over the same rows.
Usage: data.py QREL FOLDER ROWS   (5 columns; 0.1% of the records changed, 0.05% missing)"""
import os
import sqlite3
import subprocess
import sys
import time

qrel, folder, rows = sys.argv[1], sys.argv[2], int(sys.argv[3])
os.environ["QREL_HOME"] = folder + "/home"
os.makedirs(folder + "/home", exist_ok=True)
batch = 1000


def records(side):
    for n in range(1, rows + 1):
        if side == "b" and n % 2000 == 1111:
            continue
        city = "Lisbon" if side == "b" and n % 1000 == 500 else "Porto"
        yield (n, f"Customer number {n} of the shop", city, f"{n % 9973}.{n % 10000:04}",
               f"20{n % 25:02}-{n % 12 + 1:02}-{n % 28 + 1:02} {n % 24:02}:{n % 60:02}:00")


def write_script(side):
    with open(f"{folder}/{side}.sql", "w") as script:
        script.write("CREATE TABLE Sale (Id int NOT NULL PRIMARY KEY, Customer nvarchar(60) NOT NULL, City varchar(30), "
                     "Amount decimal(12,4), Sold datetime)\nGO\n")
        values = []
        for n, customer, city, amount, sold in records(side):
            values.append(f"({n},N'{customer}','{city}',{amount},'{sold}')")
            if len(values) == batch:
                script.write("INSERT Sale VALUES " + ",".join(values) + "\nGO\n")
                values = []
        if values:
            script.write("INSERT Sale VALUES " + ",".join(values) + "\nGO\n")


def write_sqlite(side):
    path = f"{folder}/{side}.sqlite"
    if os.path.exists(path):
        os.remove(path)
    database = sqlite3.connect(path)
    database.execute("CREATE TABLE Sale (Id INTEGER PRIMARY KEY, Customer TEXT, City TEXT, Amount TEXT, Sold TEXT)")
    database.executemany("INSERT INTO Sale VALUES (?,?,?,?,?)", records(side))
    database.commit()
    database.close()


for side in ("a", "b"):
    write_script(side)
    subprocess.run([qrel, "load", f"bench/{side}", f"{folder}/{side}.sql", "--replace"], check=True,
                   stdout=subprocess.DEVNULL)
    os.remove(f"{folder}/{side}.sql")
    write_sqlite(side)


def measure(name, command):
    results = []
    for _ in range(3):
        started = time.monotonic()
        child = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, shell=isinstance(command, str))
        _, _, usage = os.wait4(child.pid, 0)
        results.append((time.monotonic() - started, usage.ru_maxrss))
    seconds, peak = sorted(results)[1]
    print(f"  {name}: {seconds:.2f} s, peak {peak / 1024:.0f} MB", flush=True)


compare = [qrel, "data", "bench/a", "bench/b", "--table", "Sale"]
query = "'select * from Sale order by Id'"
files = f"{folder}/a.sqlite {folder}/b.sqlite"
measure("by key", compare + ["--key", "Id"])
measure("sqldiff", f"sqldiff {files}")
measure("by position, cursor of the server", compare + ["--sort", "Id", "--set", "CursorConnectionUseServer=on"])
measure("sqlite3 and diff", f"sqlite3 {folder}/a.sqlite {query} >{folder}/a.txt; sqlite3 {folder}/b.sqlite {query} | "
        f"diff {folder}/a.txt -")
