DECLARE @i int = 0, @s varchar(100); WHILE @i < 3 BEGIN SET @i += 1 SET @s = CONCAT(@s, @i, ',') END IF @i = 3 SELECT @s, STUFF(REPLACE(@s, ',', ''), 1, 1, 'z') ELSE SELECT 2
