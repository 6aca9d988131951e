CREATE TABLE Customers (Id INTEGER PRIMARY KEY, Name TEXT NOT NULL, Country TEXT);
CREATE TABLE Products (Id INTEGER PRIMARY KEY, Name TEXT NOT NULL, Price REAL NOT NULL);
CREATE TABLE Orders (
  Id INTEGER PRIMARY KEY,
  CustomerId INTEGER NOT NULL REFERENCES Customers(Id),
  OrderDate TEXT NOT NULL
);
CREATE TABLE OrderItems (
  Id INTEGER PRIMARY KEY,
  OrderId INTEGER NOT NULL REFERENCES Orders(Id),
  ProductId INTEGER NOT NULL REFERENCES Products(Id),
  Price REAL NOT NULL,
  Quantity INTEGER NOT NULL
);
CREATE VIEW BigOrders AS
  SELECT o.Id, Sum(i.Price * i.Quantity) AS Total
  FROM Orders o JOIN OrderItems i ON i.OrderId = o.Id
  GROUP BY o.Id HAVING Sum(i.Price * i.Quantity) > 100;
INSERT INTO Customers VALUES (1, 'Ada', 'UK'), (2, 'Grace', 'US'), (3, 'Linus', 'FI');
INSERT INTO Products VALUES (1, 'Keyboard', 49.5), (2, 'Monitor', 189.0), (3, 'Cable', 4.2);
INSERT INTO Orders VALUES (1, 1, '2026-02-01'), (2, 2, '2026-03-15'), (3, 3, '2025-12-24');
INSERT INTO OrderItems VALUES (1, 1, 1, 49.5, 1), (2, 1, 3, 4.2, 3), (3, 2, 2, 189.0, 1),
  (4, 3, 3, 4.2, 10);
