SELECT CAST(price AS decimal(38, 10)) * paid / 3 - amount, CONVERT(varchar(30), at, 121), DATEADD(month, 1, day), ISNULL(note, 'x') + name, CASE WHEN flag = 1 THEN big ELSE id END, bytes, key1 FROM a
