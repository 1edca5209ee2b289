-- A small shop, second version: customers have an e-mail address, lists of orders are sorted by date, closing an order
-- notes when it was done.
CREATE DATABASE Shop;
GO
USE Shop;
GO

CREATE TABLE dbo.Customers (
    CustomerId  INT            IDENTITY (1, 1) NOT NULL,
    Name        NVARCHAR (80)  NOT NULL,
    City        NVARCHAR (40)  NULL,
    Email       VARCHAR (120)  NULL,
    Discount    DECIMAL (5, 2) NOT NULL CONSTRAINT DF_Customers_Discount DEFAULT (0),
    CONSTRAINT PK_Customers PRIMARY KEY CLUSTERED (CustomerId)
);
CREATE INDEX IX_Customers_Name ON dbo.Customers (Name);
GO

CREATE TABLE dbo.Products (
    ProductId   INT            NOT NULL,
    Title       VARCHAR (80)   NOT NULL,
    Price       MONEY          NOT NULL,
    CONSTRAINT PK_Products PRIMARY KEY CLUSTERED (ProductId)
);
GO

CREATE TABLE dbo.Orders (
    OrderId     INT            IDENTITY (1000, 1) NOT NULL,
    CustomerId  INT            NOT NULL,
    OrderedAt   DATETIME       NOT NULL CONSTRAINT DF_Orders_OrderedAt DEFAULT (GETDATE()),
    ClosedAt    DATETIME       NULL,
    Status      CHAR (1)       NOT NULL CONSTRAINT DF_Orders_Status DEFAULT ('N'),
    CONSTRAINT PK_Orders PRIMARY KEY CLUSTERED (OrderId),
    CONSTRAINT FK_Orders_Customers FOREIGN KEY (CustomerId) REFERENCES dbo.Customers (CustomerId)
);
CREATE INDEX IX_Orders_CustomerId ON dbo.Orders (CustomerId);
CREATE INDEX IX_Orders_OrderedAt ON dbo.Orders (OrderedAt);
GO

CREATE TABLE dbo.OrderLines (
    OrderId     INT            NOT NULL,
    LineNumber  SMALLINT       NOT NULL,
    ProductId   INT            NOT NULL,
    Quantity    INT            NOT NULL,
    CONSTRAINT PK_OrderLines PRIMARY KEY CLUSTERED (OrderId, LineNumber),
    CONSTRAINT FK_OrderLines_Orders FOREIGN KEY (OrderId) REFERENCES dbo.Orders (OrderId),
    CONSTRAINT FK_OrderLines_Products FOREIGN KEY (ProductId) REFERENCES dbo.Products (ProductId)
);
GO

CREATE VIEW dbo.OpenOrders
AS
SELECT o.OrderId, c.Name, c.Email, o.OrderedAt
FROM dbo.Orders o INNER JOIN dbo.Customers c ON c.CustomerId = o.CustomerId
WHERE o.Status = 'N'
GO

CREATE FUNCTION dbo.OrderTotal (@OrderId INT)
RETURNS MONEY
AS
BEGIN
    RETURN (SELECT SUM(l.Quantity * p.Price)
            FROM dbo.OrderLines l INNER JOIN dbo.Products p ON p.ProductId = l.ProductId
            WHERE l.OrderId = @OrderId)
END
GO

CREATE PROCEDURE AddOrder
    @CustomerId INT
AS
    INSERT INTO dbo.Orders (CustomerId) VALUES (@CustomerId)
    RETURN SCOPE_IDENTITY()
GO

CREATE PROCEDURE dbo.CloseOrder
    @OrderId INT
AS
    -- An order is closed once and never opened again.
    UPDATE dbo.Orders SET Status = 'C', ClosedAt = GETDATE() WHERE OrderId = @OrderId
GO

CREATE PROCEDURE dbo.OrdersOfCustomer
    @CustomerId INT
AS
    SELECT OrderId, OrderedAt, Status FROM dbo.Orders WHERE CustomerId = @CustomerId ORDER BY OrderedAt
GO

CREATE TRIGGER dbo.Orders_NoDelete ON dbo.Orders
FOR DELETE
AS
    RAISERROR ('Orders are never deleted.', 16, 1)
    ROLLBACK TRANSACTION
GO

SET IDENTITY_INSERT dbo.Customers ON
INSERT INTO dbo.Customers (CustomerId, Name, City, Email) VALUES (1, N'Anna Berg', N'Lübeck', 'anna@berg.example')
INSERT INTO dbo.Customers (CustomerId, Name, City) VALUES (2, N'O''Neill & Sons', N'Cork')
INSERT INTO dbo.Customers (CustomerId, Name, City) VALUES (3, N'Łukasz Nowak', NULL)
INSERT INTO dbo.Customers (CustomerId, Name, City) VALUES (4, N'Maria Sá', N'Porto')
SET IDENTITY_INSERT dbo.Customers OFF
GO

INSERT INTO dbo.Products (ProductId, Title, Price) VALUES
    (10, 'Kettle', 29.9),
    (11, 'Toaster', 36.5),
    (12, 'Teapot', 18)
GO
