-- Statements for the model round trip, one a line.

-- Joins of 2, 4, 6 and 8 tables along the foreign keys: inner and outer, either spelling,
-- either order of the ON operands, with and without WHERE and ORDER BY.
SELECT oi.order_id, oi.product_id, o.status FROM order_items oi INNER JOIN orders o ON o.id = oi.order_id ORDER BY oi.order_id, oi.product_id
SELECT oi.order_id, oi.product_id, o.status FROM order_items oi LEFT OUTER JOIN orders o ON o.id = oi.order_id WHERE oi.qty > 5 ORDER BY oi.order_id, oi.product_id
SELECT oi.order_id, oi.product_id, o.status FROM order_items oi JOIN orders o ON oi.order_id = o.id
SELECT oi.order_id, oi.product_id, o.status FROM order_items oi LEFT JOIN orders o ON oi.order_id = o.id WHERE oi.qty > 5 ORDER BY oi.order_id, oi.product_id
SELECT oi.order_id, oi.product_id, o.status, c.name, co.name FROM order_items oi INNER JOIN orders o ON o.id = oi.order_id JOIN customers c ON c.id = o.customer_id INNER JOIN countries co ON co.id = c.country_id ORDER BY oi.order_id, oi.product_id
SELECT oi.order_id, oi.product_id, o.status, c.name, co.name FROM order_items oi LEFT OUTER JOIN orders o ON o.id = oi.order_id LEFT JOIN customers c ON c.id = o.customer_id LEFT OUTER JOIN countries co ON co.id = c.country_id WHERE oi.qty > 5 ORDER BY oi.order_id, oi.product_id
SELECT oi.order_id, oi.product_id, o.status, c.name, co.name FROM order_items oi JOIN orders o ON oi.order_id = o.id INNER JOIN customers c ON o.customer_id = c.id JOIN countries co ON c.country_id = co.id
SELECT oi.order_id, oi.product_id, o.status, c.name, co.name FROM order_items oi LEFT JOIN orders o ON oi.order_id = o.id LEFT OUTER JOIN customers c ON o.customer_id = c.id LEFT JOIN countries co ON c.country_id = co.id WHERE oi.qty > 5 ORDER BY oi.order_id, oi.product_id
SELECT oi.order_id, oi.product_id, o.status, c.name, co.name, r.name, p.price FROM order_items oi INNER JOIN orders o ON o.id = oi.order_id JOIN customers c ON c.id = o.customer_id INNER JOIN countries co ON co.id = c.country_id JOIN regions r ON r.id = co.region_id INNER JOIN products p ON p.id = oi.product_id ORDER BY oi.order_id, oi.product_id
SELECT oi.order_id, oi.product_id, o.status, c.name, co.name, r.name, p.price FROM order_items oi LEFT OUTER JOIN orders o ON o.id = oi.order_id LEFT JOIN customers c ON c.id = o.customer_id LEFT OUTER JOIN countries co ON co.id = c.country_id LEFT JOIN regions r ON r.id = co.region_id LEFT OUTER JOIN products p ON p.id = oi.product_id WHERE oi.qty > 5 ORDER BY oi.order_id, oi.product_id
SELECT oi.order_id, oi.product_id, o.status, c.name, co.name, r.name, p.price FROM order_items oi JOIN orders o ON oi.order_id = o.id INNER JOIN customers c ON o.customer_id = c.id JOIN countries co ON c.country_id = co.id INNER JOIN regions r ON co.region_id = r.id JOIN products p ON oi.product_id = p.id
SELECT oi.order_id, oi.product_id, o.status, c.name, co.name, r.name, p.price FROM order_items oi LEFT JOIN orders o ON oi.order_id = o.id LEFT OUTER JOIN customers c ON o.customer_id = c.id LEFT JOIN countries co ON c.country_id = co.id LEFT OUTER JOIN regions r ON co.region_id = r.id LEFT JOIN products p ON oi.product_id = p.id WHERE oi.qty > 5 ORDER BY oi.order_id, oi.product_id
SELECT oi.order_id, oi.product_id, o.status, c.name, co.name, r.name, p.price, ca.name, s.name FROM order_items oi INNER JOIN orders o ON o.id = oi.order_id JOIN customers c ON c.id = o.customer_id INNER JOIN countries co ON co.id = c.country_id JOIN regions r ON r.id = co.region_id INNER JOIN products p ON p.id = oi.product_id JOIN categories ca ON ca.id = p.category_id INNER JOIN suppliers s ON s.id = p.supplier_id ORDER BY oi.order_id, oi.product_id
SELECT oi.order_id, oi.product_id, o.status, c.name, co.name, r.name, p.price, ca.name, s.name FROM order_items oi LEFT OUTER JOIN orders o ON o.id = oi.order_id LEFT JOIN customers c ON c.id = o.customer_id LEFT OUTER JOIN countries co ON co.id = c.country_id LEFT JOIN regions r ON r.id = co.region_id LEFT OUTER JOIN products p ON p.id = oi.product_id LEFT JOIN categories ca ON ca.id = p.category_id LEFT OUTER JOIN suppliers s ON s.id = p.supplier_id WHERE oi.qty > 5 ORDER BY oi.order_id, oi.product_id
SELECT oi.order_id, oi.product_id, o.status, c.name, co.name, r.name, p.price, ca.name, s.name FROM order_items oi JOIN orders o ON oi.order_id = o.id INNER JOIN customers c ON o.customer_id = c.id JOIN countries co ON c.country_id = co.id INNER JOIN regions r ON co.region_id = r.id JOIN products p ON oi.product_id = p.id INNER JOIN categories ca ON p.category_id = ca.id JOIN suppliers s ON p.supplier_id = s.id
SELECT oi.order_id, oi.product_id, o.status, c.name, co.name, r.name, p.price, ca.name, s.name FROM order_items oi LEFT JOIN orders o ON oi.order_id = o.id LEFT OUTER JOIN customers c ON o.customer_id = c.id LEFT JOIN countries co ON c.country_id = co.id LEFT OUTER JOIN regions r ON co.region_id = r.id LEFT JOIN products p ON oi.product_id = p.id LEFT OUTER JOIN categories ca ON p.category_id = ca.id LEFT JOIN suppliers s ON p.supplier_id = s.id WHERE oi.qty > 5 ORDER BY oi.order_id, oi.product_id

-- WHERE conditions (criteria columns joined by OR) on output columns and others.
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE c.credit > 1000 ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE c.credit > 1000 AND c.segment = 'retail' ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE c.credit > 1000 OR c.segment = 'retail' ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE (c.credit > 1000 AND c.segment = 'retail') OR (c.credit < 100 AND c.segment = 'corporate') ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE c.credit BETWEEN 100 AND 2000 AND c.country_id IN (1, 2, 3) ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE c.credit NOT BETWEEN 100 AND 2000 OR c.credit IS NULL ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE c.name LIKE 'Ann%' OR c.name LIKE '%7' ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE c.country_id IS NULL OR co.population < 20000 ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE NOT (c.segment = 'retail' OR c.segment = 'public') ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE c.segment <> 'retail' AND NOT c.credit > 3000 ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE c.credit > 500 AND c.credit < 4000 AND c.segment = 'corporate' OR c.id = 1 ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE co.name = 'Country3' OR co.name = 'Country4' OR co.name = 'Country5' ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE c.id * 2 > co.id + 10 AND c.credit >= 0 ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE c.id = 5 OR c.id = 6 AND c.credit > 0 OR c.id = 7 ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE (c.id < 10 OR c.id > 50) AND (c.segment = 'retail' OR c.segment = 'Retail') ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE length(c.name) > 6 AND upper(c.segment) = 'RETAIL' ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE c.credit > (SELECT avg(c2.credit) FROM customers c2) ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE c.id IN (SELECT o.customer_id FROM orders o WHERE o.status = 'closed') ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE c.id NOT IN (SELECT o.customer_id FROM orders o WHERE o.customer_id IS NOT NULL) ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE EXISTS (SELECT 1 FROM orders o WHERE o.customer_id = c.id AND o.status = 'open') ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE NOT EXISTS (SELECT 1 FROM orders o WHERE o.customer_id = c.id) OR c.credit IS NULL ORDER BY c.id
SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id WHERE c.segment IN ('retail', 'public') AND (c.credit > 2000 OR c.country_id = 1) ORDER BY c.id

-- Other joins: right, full, cross, comma, self, nested and extra conditions.
SELECT c.id, o.id FROM orders o RIGHT JOIN customers c ON c.id = o.customer_id ORDER BY c.id, o.id
SELECT c.id, co.id FROM customers c FULL OUTER JOIN countries co ON co.id = c.country_id
SELECT r.name, ca.name FROM regions r CROSS JOIN categories ca ORDER BY r.name, ca.name
SELECT c.name, co.name FROM customers c, countries co WHERE co.id = c.country_id AND co.population > 30000
SELECT e.name, m.name AS boss FROM employees e LEFT JOIN employees m ON m.id = e.manager_id ORDER BY e.id
SELECT o.id, c.name FROM orders o JOIN (customers c JOIN countries co ON co.id = c.country_id) ON c.id = o.customer_id WHERE co.region_id = 2
SELECT o.id, oi.product_id FROM orders o JOIN order_items oi ON o.id = oi.order_id AND oi.qty > 10 AND o.status <> 'open' ORDER BY o.id, oi.product_id
SELECT p.id, s.name FROM products p LEFT JOIN suppliers s ON s.id = p.supplier_id AND s.country_id IS NOT NULL ORDER BY p.id
SELECT c.id, o.id FROM customers c LEFT JOIN orders o ON o.customer_id = c.id AND (o.status = 'open' OR o.status = 'shipped') ORDER BY c.id, o.id
SELECT e.name, co.name, r.name FROM employees e JOIN countries co ON co.id = e.country_id LEFT JOIN regions r ON r.id = co.region_id ORDER BY e.id
SELECT c.id FROM customers c LEFT JOIN orders o ON o.customer_id = c.id WHERE o.id IS NULL
SELECT ca.name, parent.name FROM categories ca LEFT JOIN categories parent ON parent.id = ca.parent_id ORDER BY ca.id
SELECT o.id, e.name FROM orders o JOIN employees e ON e.id = o.employee_id JOIN countries co ON co.id = e.country_id AND co.id <> 3 WHERE o.id < 50
SELECT s.name, co.name FROM suppliers s JOIN countries co ON s.country_id = co.id JOIN customers c ON c.country_id = co.id AND c.segment = 'retail' ORDER BY s.id, c.id
SELECT p.name FROM products p JOIN categories ca ON ca.id = p.category_id JOIN categories pa ON pa.id = ca.parent_id WHERE pa.name = 'Cat1' OR pa.name = 'Cat2'
SELECT co.name, c.name FROM countries co RIGHT OUTER JOIN customers c ON c.country_id = co.id ORDER BY c.id
SELECT s.id, p.id FROM suppliers s FULL JOIN products p ON p.supplier_id = s.id AND p.price > 100
SELECT o.id, c.name, e.name FROM orders o LEFT JOIN customers c ON c.id = o.customer_id LEFT JOIN employees e ON e.id = o.employee_id AND e.country_id = c.country_id ORDER BY o.id
SELECT oi.order_id, p.name FROM order_items oi, products p, categories ca WHERE p.id = oi.product_id AND ca.id = p.category_id AND ca.parent_id = 1 ORDER BY oi.order_id, p.id
SELECT c.id, o.id, oi.product_id FROM customers c JOIN orders o ON o.customer_id = c.id JOIN order_items oi ON oi.order_id = o.id AND oi.qty > o.id / 20 WHERE c.id < 20 ORDER BY c.id, o.id, oi.product_id
SELECT e.name FROM employees e JOIN employees m ON m.id = e.manager_id JOIN employees t ON t.id = m.manager_id ORDER BY e.id
SELECT co.name FROM countries co JOIN regions r ON co.region_id = r.id OR co.population > 80000 ORDER BY co.id, r.id
SELECT c.name FROM (customers c JOIN countries co ON co.id = c.country_id) JOIN regions r ON r.id = co.region_id WHERE r.name = 'East' ORDER BY c.id
SELECT o.id FROM orders o JOIN customers c ON c.id = o.customer_id JOIN countries co ON co.id = c.country_id JOIN regions r ON r.id = co.region_id JOIN employees e ON e.id = o.employee_id AND e.country_id = co.id ORDER BY o.id
SELECT ca.name, p.name FROM categories ca LEFT JOIN products p ON p.category_id = ca.id AND p.price < 20 ORDER BY ca.id, p.id

-- Grouping.
SELECT c.segment, count(*) FROM customers c GROUP BY c.segment ORDER BY c.segment
SELECT c.segment, count(*) AS n FROM customers c GROUP BY c.segment HAVING count(*) > 10 ORDER BY n DESC, c.segment
SELECT co.name, sum(c.credit) AS total, avg(c.credit) FROM customers c JOIN countries co ON co.id = c.country_id GROUP BY co.name HAVING sum(c.credit) > 5000 ORDER BY total DESC, co.name
SELECT o.status, count(DISTINCT o.customer_id) FROM orders o GROUP BY o.status ORDER BY 2 DESC, 1
SELECT o.customer_id, count(*) FROM orders o WHERE o.status <> 'cancelled' GROUP BY o.customer_id HAVING count(*) >= 7 OR o.customer_id < 3 ORDER BY o.customer_id
SELECT p.category_id, min(p.price), max(p.price) FROM products p GROUP BY p.category_id HAVING max(p.price) > 100 AND min(p.price) < 200
SELECT r.name, co.name, count(c.id) FROM regions r JOIN countries co ON co.region_id = r.id LEFT JOIN customers c ON c.country_id = co.id GROUP BY r.name, co.name ORDER BY r.name, co.name
SELECT upper(c.segment) AS seg, count(*) FROM customers c GROUP BY upper(c.segment) ORDER BY seg
SELECT oi.product_id, sum(oi.qty * (1 - oi.discount)) AS volume FROM order_items oi GROUP BY oi.product_id HAVING sum(oi.qty) > 30 ORDER BY volume DESC, oi.product_id
SELECT o.employee_id, count(*) FROM orders o WHERE o.employee_id IS NOT NULL AND o.status = 'closed' GROUP BY o.employee_id HAVING count(*) > 2
SELECT c.country_id, c.segment, count(*) FROM customers c WHERE c.country_id > 2 GROUP BY c.country_id, c.segment HAVING c.country_id < 10 ORDER BY c.country_id, c.segment
SELECT e.manager_id, count(*) AS reports, max(e.salary) FROM employees e WHERE e.manager_id IS NOT NULL GROUP BY e.manager_id ORDER BY reports DESC, e.manager_id
SELECT ca.name, count(DISTINCT s.id) FROM categories ca JOIN products p ON p.category_id = ca.id JOIN suppliers s ON s.id = p.supplier_id GROUP BY ca.name ORDER BY ca.name
SELECT count(*), sum(oi.qty) FROM order_items oi WHERE oi.discount > 0
SELECT o.status, count(*) FROM orders o JOIN customers c ON c.id = o.customer_id WHERE c.segment = 'retail' OR c.segment = 'Retail' GROUP BY o.status HAVING count(*) > 5 OR o.status = 'open' ORDER BY o.status
SELECT c.id, c.name, (SELECT count(*) FROM orders o WHERE o.customer_id = c.id) AS n FROM customers c ORDER BY n DESC, c.id
SELECT p.supplier_id, avg(p.price) AS a FROM products p GROUP BY p.supplier_id HAVING avg(p.price) > (SELECT avg(p2.price) FROM products p2)
SELECT co.region_id, sum(co.population) FROM countries co GROUP BY co.region_id HAVING co.region_id IS NOT NULL ORDER BY co.region_id
SELECT o.customer_id, max(o.order_date) FROM orders o GROUP BY o.customer_id HAVING max(o.order_date) > '2024-05' ORDER BY o.customer_id
SELECT c.segment, c.country_id FROM customers c GROUP BY c.segment, c.country_id HAVING count(*) > 1 ORDER BY c.segment, c.country_id

-- Unions and bracketed groups.
SELECT c.name FROM customers c UNION SELECT s.name FROM suppliers s
SELECT c.name FROM customers c UNION ALL SELECT s.name FROM suppliers s UNION ALL SELECT e.name FROM employees e
SELECT c.id FROM customers c EXCEPT SELECT o.customer_id FROM orders o
SELECT c.country_id FROM customers c INTERSECT SELECT s.country_id FROM suppliers s
SELECT c.name AS n FROM customers c WHERE c.credit > 3000 UNION SELECT s.name FROM suppliers s ORDER BY n
SELECT c.id, c.name FROM customers c WHERE c.id < 5 UNION SELECT e.id, e.name FROM employees e WHERE e.id < 5 ORDER BY 1, 2
SELECT co.name FROM countries co UNION (SELECT c.name FROM customers c EXCEPT SELECT c2.name FROM customers c2 WHERE c2.id > 30)
(SELECT c.id FROM customers c UNION SELECT s.id FROM suppliers s) EXCEPT SELECT e.id FROM employees e
SELECT c.id FROM customers c UNION ALL (SELECT o.customer_id FROM orders o WHERE o.id < 20 UNION SELECT e.id FROM employees e) ORDER BY 1
SELECT r.name FROM regions r UNION ALL SELECT co.name FROM countries co WHERE co.region_id = 1 UNION ALL SELECT ca.name FROM categories ca ORDER BY 1
SELECT c.id FROM customers c WHERE c.segment = 'retail' UNION SELECT c.id FROM customers c WHERE c.credit > 4000
SELECT o.customer_id, count(*) FROM orders o GROUP BY o.customer_id HAVING count(*) > 8 UNION SELECT c.id, 0 FROM customers c WHERE c.id > 58
SELECT s.id FROM suppliers s INTERSECT (SELECT p.supplier_id FROM products p UNION SELECT o.id FROM orders o WHERE o.id < 3)
SELECT e.id FROM employees e EXCEPT SELECT e2.manager_id FROM employees e2 ORDER BY 1
SELECT c.id, c.name FROM customers c WHERE c.id IN (SELECT o.customer_id FROM orders o UNION SELECT c3.id FROM customers c3 WHERE c3.id < 3) ORDER BY c.id
SELECT p.name FROM products p WHERE p.price > 200 UNION SELECT p.name FROM products p JOIN categories ca ON ca.id = p.category_id WHERE ca.name = 'Cat2'

-- Sub-queries in FROM and in conditions, and other expressions.
SELECT x.n, x.c FROM (SELECT c.segment AS n, count(*) AS c FROM customers c GROUP BY c.segment) x WHERE x.c > 5 ORDER BY x.n
SELECT t.id, t.total FROM (SELECT o.id, sum(oi.qty) AS total FROM orders o JOIN order_items oi ON oi.order_id = o.id GROUP BY o.id) t WHERE t.total > 40 ORDER BY t.id
SELECT c.name, t.n FROM customers c JOIN (SELECT o.customer_id AS cid, count(*) AS n FROM orders o GROUP BY o.customer_id) t ON t.cid = c.id WHERE t.n > 6 ORDER BY c.id
SELECT a.id, b.id FROM (SELECT c.id FROM customers c WHERE c.id < 4) a CROSS JOIN (SELECT s.id FROM suppliers s WHERE s.id < 3) b ORDER BY a.id, b.id
SELECT q.name FROM (SELECT c.name FROM customers c UNION SELECT s.name FROM suppliers s) q WHERE q.name LIKE '%1%' ORDER BY q.name
SELECT p.name, p.price FROM products p WHERE p.price > (SELECT avg(p2.price) FROM products p2 WHERE p2.category_id = p.category_id) ORDER BY p.id
SELECT o.id FROM orders o WHERE o.customer_id IN (SELECT c.id FROM customers c WHERE c.country_id IN (SELECT co.id FROM countries co WHERE co.region_id = 3)) ORDER BY o.id
SELECT e.name FROM employees e WHERE EXISTS (SELECT 1 FROM employees r WHERE r.manager_id = e.id) ORDER BY e.id
SELECT c.id, CASE WHEN c.credit > 3000 THEN 'high' WHEN c.credit > 1000 THEN 'mid' ELSE 'low' END AS grade FROM customers c ORDER BY c.id
SELECT p.id, CAST(p.price AS INTEGER) AS whole, p.price * 2 - 1 FROM products p ORDER BY p.id
SELECT DISTINCT c.segment FROM customers c ORDER BY c.segment
SELECT DISTINCT o.status, o.employee_id FROM orders o WHERE o.employee_id < 4
SELECT * FROM regions r ORDER BY r.id
SELECT r.*, co.name FROM regions r JOIN countries co ON co.region_id = r.id ORDER BY co.id
SELECT c.id, coalesce(c.credit, 0) + 1 AS c1, -c.id FROM customers c WHERE c.id <= 10 ORDER BY c.id
SELECT 1 AS one, 'x' AS ex
SELECT abs(c.credit - 2500) AS d FROM customers c WHERE c.credit IS NOT NULL ORDER BY d, c.id
SELECT o.id, (SELECT max(oi.qty) FROM order_items oi WHERE oi.order_id = o.id) FROM orders o WHERE o.id < 10 ORDER BY o.id
SELECT c.name FROM customers c WHERE c.credit = (SELECT max(c2.credit) FROM customers c2)
SELECT c.id FROM customers AS c WHERE c.name LIKE 'Bob 1%' ORDER BY c.id DESC
SELECT s.name FROM suppliers s WHERE s.id IN (SELECT p.supplier_id FROM products p WHERE p.price BETWEEN 50 AND 100) AND NOT s.name = 'Sup3'
SELECT x.a FROM (SELECT y.b AS a FROM (SELECT c.id AS b FROM customers c WHERE c.id < 8) y) x ORDER BY x.a
SELECT o.id, o.status FROM orders o WHERE o.status IN ('open', 'closed') AND o.order_date >= '2024-03' AND o.id < 40 ORDER BY o.order_date, o.id

-- Names in sub-queries: a source with an alias answers only to its alias, a name no
-- inner source answers to belongs to the enclosing query, and an unqualified name to
-- the innermost query whose sources have the column.
SELECT customers.id, (SELECT count(*) FROM customers x WHERE x.credit < customers.credit) AS n FROM customers ORDER BY customers.id
SELECT employees.name FROM employees WHERE EXISTS (SELECT 1 FROM employees r WHERE r.manager_id = employees.id) ORDER BY employees.id
SELECT countries.name FROM countries WHERE countries.id IN (SELECT c.country_id FROM customers c WHERE c.credit * 10 > countries.population) ORDER BY countries.id
SELECT orders.id FROM orders WHERE orders.customer_id IN (SELECT orders.id FROM orders o2 WHERE o2.status = 'open') ORDER BY orders.id
SELECT name FROM customers WHERE EXISTS (SELECT 1 FROM suppliers WHERE suppliers.country_id = customers.country_id AND name LIKE '%1') ORDER BY id
SELECT p.id FROM products p WHERE (SELECT count(*) FROM order_items WHERE product_id = p.id AND qty > price / 20) > 1 ORDER BY p.id
SELECT name, (SELECT count(*) FROM orders WHERE customer_id = customers.id AND status = 'open') FROM customers ORDER BY id
SELECT q.id, q.n FROM (SELECT id, (SELECT count(*) FROM orders WHERE customer_id = customers.id) AS n FROM customers) q WHERE q.n > 6 ORDER BY q.id
SELECT c.id, t.total FROM customers c JOIN (SELECT customer_id, count(*) AS total FROM orders GROUP BY customer_id) t ON t.customer_id = c.id ORDER BY c.id

-- ORDER BY terms: aliases naming more than one output column, numbers, repeated terms,
-- aliases that are also column names, and terms that are not output.
SELECT q.name AS c, r.name AS c FROM regions q, regions r WHERE q.id <> r.id ORDER BY r.name, q.name
SELECT q.name AS c, r.name AS c FROM regions q, regions r WHERE q.id <> r.id ORDER BY 2 DESC, 1
SELECT c.segment, c.name, c.id FROM customers c ORDER BY 1, 3 DESC
SELECT c.id, c.name FROM customers c ORDER BY 1, 1
SELECT c.id, c.segment FROM customers c ORDER BY c.segment, 2 DESC, c.segment, 1
SELECT c.segment AS name, c.id FROM customers c ORDER BY name, c.id DESC
SELECT c.id, c.name AS id FROM customers c ORDER BY c.id DESC
SELECT c.id, c.name FROM customers c ORDER BY c.credit DESC, c.segment, c.id
SELECT 7, c.id FROM customers c ORDER BY 1, 2 DESC
SELECT c.id AS k, c.name FROM customers c WHERE c.id < 5 UNION SELECT e.id, e.name FROM employees e WHERE e.id < 5 ORDER BY 2 DESC, k
SELECT c.id AS k, c.name AS k FROM customers c WHERE c.id < 5 UNION SELECT e.id, e.name FROM employees e WHERE e.id < 5 ORDER BY 2, 1

-- Condition forms: a term about one expression becomes a criteria cell of its row; EXISTS,
-- a negated predicate, an OR about several expressions inside an AND, and the like stay
-- whole conditions. WHERE and HAVING alike; texts differing only in the case of a quoted
-- value are different rows.
SELECT c.id FROM customers c WHERE c.id < 30 AND (EXISTS (SELECT 1 FROM orders o WHERE o.customer_id = c.id AND o.status = 'open') OR EXISTS (SELECT 1 FROM orders o WHERE o.customer_id = c.id AND o.status = 'closed'))
SELECT c.id FROM customers c WHERE NOT EXISTS (SELECT 1 FROM orders o WHERE o.customer_id = c.id) AND c.id > 3
SELECT c.id FROM customers c WHERE NOT (NOT EXISTS (SELECT 1 FROM orders o WHERE o.customer_id = c.id))
SELECT c.id FROM customers c WHERE EXISTS (SELECT 1 FROM orders o WHERE o.customer_id = c.id) AND EXISTS (SELECT 1 FROM orders o WHERE o.customer_id = c.id)
SELECT c.id FROM customers c WHERE c.id IN (SELECT o.customer_id FROM orders o) AND c.credit > 100 OR c.id IN (1, 2, 3)
SELECT c.id FROM customers c WHERE NOT c.id IN (SELECT o.customer_id FROM orders o WHERE o.customer_id IS NOT NULL)
SELECT c.id FROM customers c WHERE c.id NOT IN (1, 2, 3) AND c.credit NOT BETWEEN 10 AND 1000
SELECT c.id FROM customers c WHERE c.name LIKE 'B!%%' ESCAPE '!' OR c.name NOT LIKE '%1%'
SELECT c.id FROM customers c WHERE c.credit IS NULL OR c.segment IS NOT NULL AND c.id > 40
SELECT c.id FROM customers c WHERE NOT (c.id > 5 AND (c.credit < 100 OR c.segment = 'retail'))
SELECT c.id FROM customers c WHERE NOT (c.id = 3)
SELECT c.id FROM customers c WHERE c.id = 1 OR NOT (c.id > 3 OR c.credit IS NULL)
SELECT c.id FROM customers c WHERE (c.id < 10 OR c.credit > 3000) AND (c.segment = 'retail' OR c.country_id = 2)
SELECT c.id FROM customers c WHERE (c.id < 10 OR c.id > 50) AND (c.credit > 3000 OR c.id = 55)
SELECT c.id FROM customers c WHERE (c.id = 1 OR c.id = 2) AND (c.id = 2 OR c.id = 3)
SELECT c.id FROM customers c WHERE c.id < 10 AND (c.credit > 100 OR c.credit IS NULL) OR c.id > 55 AND (c.segment = 'retail' OR EXISTS (SELECT 1 FROM orders o WHERE o.customer_id = c.id))
SELECT c.id FROM customers c WHERE 1 = 0
SELECT c.id FROM customers c WHERE 1 = 1 AND c.id < 5
SELECT c.id FROM customers c WHERE c.credit > c.id * 10 AND c.country_id = c.id
SELECT c.id FROM customers c WHERE (SELECT count(*) FROM orders o WHERE o.customer_id = c.id) > 3 AND c.id < 40
SELECT c.id FROM customers c WHERE CASE WHEN c.credit > 1000 THEN 1 ELSE 0 END = 1 AND c.id + 1 > 50 AND c.id + 1 < 60
SELECT c.id FROM customers c WHERE c.id = 1 AND c.id = 1
SELECT c.id FROM customers c WHERE 'retail' = c.segment OR 'Retail' = c.segment
SELECT c.segment, count(*) FROM customers c GROUP BY c.segment HAVING count(*) > 2 AND (sum(c.credit) > 1000 OR EXISTS (SELECT 1 FROM orders o WHERE o.status = 'open'))
SELECT c.segment, count(*) FROM customers c GROUP BY c.segment HAVING NOT EXISTS (SELECT 1 FROM orders o WHERE o.status = 'xx') AND count(*) > 1
SELECT c.segment, count(*) FROM customers c GROUP BY c.segment HAVING (count(*) > 2 OR c.segment = 'retail') AND max(c.credit) > 10
SELECT c.segment, count(*) FROM customers c WHERE c.id > 3 GROUP BY c.segment HAVING c.segment > 'a' AND (count(*) > 1 OR c.segment < 'r')
