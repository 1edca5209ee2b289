SELECT a.id, b.code, COUNT(*) n, SUM(a.price) s FROM a LEFT JOIN b ON b.a_id = a.id AND b.qty > 0 WHERE a.name LIKE N'%o[a-n]e%' ESCAPE '!' GROUP BY a.id, b.code HAVING COUNT(*) > 0 ORDER BY 1 DESC
