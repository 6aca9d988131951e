SELECT c.Name, c.Country
FROM Customers c
WHERE c.Country = 'DE'
UNION
(SELECT c.Name, c.Country
 FROM Customers c
   INNER JOIN Orders o ON c.Id = o.CustomerId
 EXCEPT
 SELECT p.Name, 'product'
 FROM Products p)
