:setvar name value
:r other.sql
SELECT $(name), N'ab', [a]]b], "c", 0x1F, $1.5, 1e3 -- note
/* a /* b */ c */
GO 3
print 'x
 GO ; -- y
