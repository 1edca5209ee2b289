#!/usr/bin/env python3
"""Writes a music-store-like script: one table of tracks with a single INSERT per row. Usage: make_load_script.py ROWS"""
import sys

rows = int(sys.argv[1])
out = sys.stdout
out.write("""CREATE TABLE [dbo].[Track] (
    [TrackId] INT NOT NULL, [Name] NVARCHAR(200) NOT NULL, [AlbumId] INT, [Composer] NVARCHAR(220),
    [Milliseconds] INT NOT NULL, [Bytes] INT, [UnitPrice] NUMERIC(10,2) NOT NULL,
    CONSTRAINT [PK_Track] PRIMARY KEY CLUSTERED ([TrackId]));
GO
""")
for i in range(1, rows + 1):
    out.write(f"INSERT INTO [dbo].[Track] ([TrackId], [Name], [AlbumId], [Composer], [Milliseconds], [Bytes], [UnitPrice]) "
              f"VALUES ({i}, N'Song number {i} of the wall', {i // 12}, N'A. Writer, B. O''Singer', {200000 + i}, "
              f"{5000000 + 7 * i}, 0.99);\n")
