#!/usr/bin/env python3
"""What a real server's road costs: a table read through ODBC, unixODBC and FreeTDS beside their own tool, and a comparison of whole
databases over a line that is 0, 1, 5 and 20 ms long. The server is the tests' TDS end over an embedded instance.
Usage: odbc.py QREL TDSEND FOLDER [ROWS]"""
import os
import socket
import subprocess
import sys
import time

qrel, tds_end, folder = sys.argv[1:4]
rows = int(sys.argv[4]) if len(sys.argv) > 4 else 1000000
os.makedirs(folder, exist_ok=True)
os.environ.update(QREL_HOME=folder + "/home", QREL_PASSWORD="Secret-1", LC_ALL="C.UTF-8")
os.makedirs(os.environ["QREL_HOME"], exist_ok=True)


def load(database, name, text):
    with open(f"{folder}/{name}.sql", "w") as script:
        for part in text:
            script.write(part)
    subprocess.run([qrel, "load", f"bench/{database}", f"{folder}/{name}.sql", "--replace"], check=True, stdout=subprocess.DEVNULL)


def table():
    yield "CREATE TABLE Sale (Id int NOT NULL PRIMARY KEY, Customer nvarchar(60) NOT NULL, City varchar(30), Amount decimal(12,4), Sold datetime)\nGO\n"
    for first in range(0, rows, 1000):
        yield "INSERT Sale VALUES " + ",".join(
            f"({n},N'Customer number {n} of the shop','Porto',{n % 9973}.{n % 10000:04},'20{n % 25:02}-{n % 12 + 1:02}-{n % 28 + 1:02} {n % 24:02}:00')"
            for n in range(first, min(first + 1000, rows))) + "\nGO\n"


def objects(side):
    for n in range(40):
        yield f"CREATE TABLE t{n} (a int NOT NULL PRIMARY KEY, b int NULL DEFAULT {n}, c varchar({n + side * (n % 20 == 0) + 1}))\nGO\n"
        yield f"CREATE PROCEDURE p{n} AS SELECT a FROM t{n} WHERE b = {n + side * (n % 10 == 0)}\nGO\n"


class Server:
    """The TDS end at a port of its own; it is added to the servers that qrel knows."""

    def __init__(self, latency):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            self.port = probe.getsockname()[1]
        self.process = subprocess.Popen([tds_end, "bench", "--port", str(self.port), "--user", "sa", "--password", "Secret-1",
                                         "--latency", str(latency)], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL)
        self.name = f"127.0.0.1,{self.port}"
        for _ in range(50):
            try:
                socket.create_connection(("127.0.0.1", self.port), 1).close()
                break
            except OSError:
                time.sleep(0.1)
        subprocess.run([qrel, "servers", "add", self.name, "--login", "sa", "--encrypt", "no"], check=True, stdout=subprocess.DEVNULL)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        subprocess.run([qrel, "servers", "remove", self.name, "--yes"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.process.stdin.close()
        self.process.wait()


def measure(name, command, codes=(0,), times=5, **how):
    seconds = []
    for _ in range(times):
        started = time.monotonic()
        code = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **how).returncode
        seconds.append(time.monotonic() - started)
        if code not in codes:
            sys.exit(f"{name}: exit code {code}")
    seconds.sort()
    print(f"  {name}: {seconds[times // 2]:.2f} s ({seconds[0]:.2f} to {seconds[-1]:.2f})", flush=True)


load("Shop", "shop", table())
load("A", "a", objects(0))
load("B", "b", objects(1))
with Server(0) as server:
    measure(f"{rows} rows read and written as CSV", [qrel, "view", server.name + "/Shop", "--table", "Sale", "--csv", folder + "/sale.csv"])
    measure("the same from the embedded server itself", [qrel, "view", "bench/Shop", "--table", "Sale", "--csv", folder + "/sale.csv"])
    with open(f"{folder}/odbc.ini", "w") as names:
        names.write(f"[bench]\nDriver=FreeTDS\nServer=127.0.0.1\nPort={server.port}\nTDS_Version=7.4\nEncryption=off\nDatabase=Shop\n")
    measure("the same by bsqlodbc", ["bsqlodbc", "-S", "bench", "-U", "sa", "-P", "Secret-1", "-D", "Shop", "-o", folder + "/sale.txt"], times=3,
            env=dict(os.environ, ODBCINI=folder + "/odbc.ini"), input=b"SELECT * FROM Sale\nGO\n")
for latency in (0, 1, 5, 20):
    with Server(latency) as server:
        measure(f"80 objects on each side, {latency} ms a round trip", [qrel, "compare", server.name + "/A", server.name + "/B"], codes=(1,),
                times=5 if latency < 20 else 3)
        if latency < 20:
            measure("   without keeping connections", [qrel, "compare", server.name + "/A", server.name + "/B"], codes=(1,), times=3,
                    env=dict(os.environ, QREL_ODBC_KEEP="0"))
