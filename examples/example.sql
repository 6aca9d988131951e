SELECT c.Name, o.OrderDate, Sum(i.Price * i.Quantity) Total
FROM Customers c
  INNER JOIN Orders o ON c.Id = o.CustomerId
  LEFT OUTER JOIN OrderItems i ON o.Id = i.OrderId
WHERE o.OrderDate >= '2026-01-01' AND c.Country <> 'XX'
GROUP BY c.Name, o.OrderDate
HAVING Sum(i.Price * i.Quantity) > 100
ORDER BY 3 DESC
