select;
SELECT;
select *;
select * from;
select from t;
select all a from t;
select distinct a, b from t;
select distinct * from t;
select all * from t;
select t.* from t;
select s.t.* from s.t;
select db.s.t.* from db.s.t;
select a, t.*, * from t;
select 1;
select 1, 2, 3;
select a from t;
SeLeCt A FrOm T;
select
  a,
  b
from
  t
where
  a = 1;
select	a	from	t;
select a x from t;
select a as x from t;
select a 'x' from t;
select a as 'my x' from t;
select x = a + 1 from t;
select 'x' = a from t;
select name = 1;
select a ada from t;
select a as type from t;
select a as "my alias" from t;
select a [my alias] from t;
select a + b as total, c - d diff, e * f 'product' from t;
select x = (select max(a) from t) from u;
select count(*) n from t;
select a.b from t;
select a.b.c from t;
select a.b.c.d from t;
select a.b.c.d.e from t;
select a..c from t;
select a...d from t;
select .b from t;
select ..c from t;
select a.b..d.e from t;
select * from db..t;
select * from s.t;
select * from db.s.t;
select * from srv.db.s.t;
select * from ..t;
select * from .t;
select * from srv...t;
select "my col" from "my table";
select [my col] from [my table];
select [a][b] from t;
select * from [db][t];
select "a""b" from t;
select "col" from t;
select t."x y" from t;
select name, type, data from catalog_name;
select t.length, t.number, t.scale from table_name t;
select c, ada, pascal from cobol;
select more.more from more;
select _x, x_1, X2 from _t;
select 1, 1.5, .5, 1.5e3, 1.5e-3, 2.0E+2 from t;
select null;
select 'it''s';
select '';
select 0x1F, 0xff;
select {d '2020-01-31'};
select {t '12:00:00'};
select {ts '2020-01-31 12:00:00'};
select {d'2020-01-31'};
select { d '2020-01-31' };
select 'a', 'b' from t where x = 'a''b';
select 0, 007, 123456789012345678901234567890;
select a + b * c from t;
select (a + b) * c from t;
select a - b - c from t;
select a / b % c from t;
select -a from t;
select - - a from t;
select +a, ~b from t;
select -(a + b) from t;
select ((a)) from t;
select (((1 + 2))) * 3;
select a * (b - (c + d)) / e from t;
select 1 - -1;
select a%b from t;
select -1 * -2 + -3 from t;
select ~~a from t;
select count(*) from t;
select count(a) from t;
select count(distinct a) from t;
select count(all a) from t;
select sum(a), avg(b), min(c), max(d) from t;
select sum(distinct a), avg(all b) from t;
select max(a + b) * 2 from t;
select f() from t;
select f(1) from t;
select f(a, b, c) from t;
select f(g(h(1))) from t;
select dbo.f(a) from t;
select db.dbo.f(a, 1) from t;
select upper(name), lower(t.name) from t;
select coalesce(a, b, 0) from t;
select f((select 1)) from t;
select f(a + 1, (b)) from t;
select count(*) + 1 from t;
select substring(c, 1, 2) from t;
select length(a) from t;
select abs(-1);
select case when a > 1 then 'x' else 'y' end from t;
select case a when 1 then 'x' end from t;
select case a when 1 then 'x' when 2 then 'y' else 'z' end from t;
select case when a = 1 then 1 when a = 2 or b = 3 then 2 end from t;
select case when a between 1 and 2 and not b is null then 1 end from t;
select case case a when 1 then 2 end when 2 then 3 end from t;
select case when exists (select * from u) then 1 else 0 end from t;
select current_timestamp, current_user, session_user, system_user;
select current_timestamp - 1 from t;
select cast(a as int) from t;
select cast(a as integer) from t;
select cast(a as int2) from t;
select cast(a as int4) from t;
select cast(a as int8) from t;
select cast(a as smallint) from t;
select cast(a as bigint) from t;
select cast(a as serial) from t;
select cast(a as serial4) from t;
select cast(a as serial8) from t;
select cast(a as bigserial) from t;
select cast(a as bit) from t;
select cast(a as varbit) from t;
select cast(a as varchar) from t;
select cast(a as character) from t;
select cast(a as char) from t;
select cast(a as interval) from t;
select cast(a as numeric) from t;
select cast(a as decimal) from t;
select cast(a as boolean) from t;
select cast(a as bool) from t;
select cast(a as box) from t;
select cast(a as bytea) from t;
select cast(a as cidr) from t;
select cast(a as circle) from t;
select cast(a as date) from t;
select cast(a as double precision) from t;
select cast(a as float8) from t;
select cast(a as float4) from t;
select cast(a as inet) from t;
select cast(a as line) from t;
select cast(a as lseg) from t;
select cast(a as macaddr) from t;
select cast(a as money) from t;
select cast(a as path) from t;
select cast(a as point) from t;
select cast(a as polygon) from t;
select cast(a as real) from t;
select cast(a as text) from t;
select cast(a as time) from t;
select cast(a as timetz) from t;
select cast(a as timestamp) from t;
select cast(a as timestamptz) from t;
select cast(a as bit(1)) from t;
select cast(a as varbit(8)) from t;
select cast(a as character(10)) from t;
select cast(a as character varying(20)) from t;
select cast(a as char(3)) from t;
select cast(a as varchar(255)) from t;
select cast(a as numeric(10)) from t;
select cast(a as numeric(10, 2)) from t;
select cast(a as decimal(5)) from t;
select cast(a as decimal(12,4)) from t;
select cast(a as time(3)) from t;
select cast(a as time(3) with time zone) from t;
select cast(a as time(0) without time zone) from t;
select cast(a as timestamp(6)) from t;
select cast(a as timestamp(6) with time zone) from t;
select cast(a as timestamp(6) without time zone) from t;
select cast(a as mytype) from t;
select cast(a as myschema.mytype) from t;
select cast(a as "my type") from t;
select cast(cast(a as int) as varchar(10)) from t;
select cast(a + 1 as numeric(5,1)) * 2 from t;
select * from t where a = 1;
select * from t where a <> 1;
select * from t where a != 1;
select * from t where a <= 1;
select * from t where a !> 1;
select * from t where a < 1;
select * from t where a >= 1;
select * from t where a !< 1;
select * from t where a > 1;
select * from t where a is null;
select * from t where a is not null;
select * from t where a like 'x%';
select * from t where a not like 'x%';
select * from t where a like 'x!%' escape '!';
select * from t where a not like b escape c;
select * from t where a between 1 and 2;
select * from t where a not between b and c + 1;
select * from t where a in (1, 2, 3);
select * from t where a not in ('x');
select * from t where a in (select b from u);
select * from t where a not in (select b from u where c = 1);
select * from t where exists (select * from u);
select * from t where not exists (select 1 from u where u.id = t.id);
select * from t where a = all (select b from u);
select * from t where a > some (select b from u);
select * from t where a <> any (select b from u);
select * from t where a = (select max(b) from u);
select * from t where > 5;
select * from t where is null;
select * from t where not like 'a';
select * from t where between 1 and 2;
select * from t where in (1, 2);
select * from t where = any (select 1);
select * from t where not a = 1;
select * from t where not not a = 1;
select * from t where not (a = 1 and b = 2);
select * from t where (a = 1);
select * from t where ((a = 1));
select * from t where (a) = 1;
select * from t where ((a)) = (1);
select * from t where (a + 1) * 2 > b;
select * from t where a = 1 and b = 2 or c = 3;
select * from t where a = 1 or b = 2 and c = 3;
select * from t where (a = 1 or b = 2) and c = 3;
select * from t where a = 1 and (b = 2 or c = 3) and d = 4;
select * from t where a = 1 and b = 2 and c = 3 and d = 4 and e = 5;
select * from t where a = 1 or b = 2 or c = 3;
select * from t where a + b between c * 2 and d / 2;
select * from t where a like '%' and b like '_';
select * from t where (select count(*) from u) > 0;
select * from t where ((select 1)) = 1;
select * from t where a in ((select 1));
select * from t where a in ((1), (2));
select * from t where not a in (1) and not b between 1 and 2;
select * from t where a is not null and b is null or not c is null;
select * from t where {d '2020-01-01'} < d;
select * from t where case when a = 1 then b end = 2;
select * from t where cast(a as int) = 1;
select * from t where f(a) = g(b);
select * from t where a = current_user;
select * from t where exists (select * from u union select * from v);
select * from t1, t2;
select * from t1, t2, t3 where t1.a = t2.a;
select * from t1 cross join t2;
select * from t1 join t2 on t1.a = t2.a;
select * from t1 inner join t2 on t1.a = t2.a;
select * from t1 left join t2 on t1.a = t2.a;
select * from t1 left outer join t2 on t1.a = t2.a;
select * from t1 right join t2 on t1.a = t2.a;
select * from t1 right outer join t2 on t1.a = t2.a;
select * from t1 full join t2 on t1.a = t2.a;
select * from t1 full outer join t2 on t1.a = t2.a and t1.b = t2.b;
select * from t1 a join t2 b on a.x = b.x join t3 c on c.y = b.y;
select * from t1 as a left join t2 as b on a.x = b.x right join t3 as c on c.y = b.y;
select * from t1 join t2 join t3 on t3.a = t2.a on t2.b = t1.b;
select * from t1 left join t2 inner join t3 on t3.a = t2.a on t2.b = t1.b;
select * from t1 join t2 cross join t3 on t1.a = t2.a;
select * from t1 join t2, t3 on t1.a = t3.a;
select * from t1 join t2 join t3 on x = 1 join t4 on y = 2 on z = 3;
select * from (t1 join t2 on t1.a = t2.a);
select * from (t1 join t2 on t1.a = t2.a) join t3 on t3.b = t1.b;
select * from t0, (t1 left join t2 on t1.a = t2.a);
select * from ((t1 join t2 on p = 1) join t3 on q = 1);
select * from (t1);
select * from (t1, t2);
select * from (t1 cross join t2) cross join (t3);
select * from t1 join (t2 join t3 on t2.a = t3.a) on t1.b = t2.b;
select * from (select 1) x;
select * from (select 1) as x;
select * from (select 1 a) x (c);
select * from (select 1, 2) as x (c, d);
select * from (select a from t) 'x';
select * from (select * from t where a = 1) x join u on u.a = x.a;
select * from t join (select a from u) v on v.a = t.a;
select * from (select a from t union select a from u) x;
select * from ((select a from t)) x;
select * from ((select a from t) union (select a from u)) x (y);
select * from f(1) x;
select * from f() as x;
select * from dbo.f(a, b);
select * from f(1);
select * from t x, u y where x.a = y.a;
select * from t as x;
select * from t 'x';
select * from t name;
select * from t as type;
select * from [t] [x];
select * from t1 join t2 on 1 = 1, t3;
select * from t1 join t2 on t1.a = t2.a and exists (select * from t3 where t3.b = t2.b);
select * from t1 join t2 on (t1.a = t2.a);
select * from t1 join t2 on not t1.a = t2.a;
select a, count(*) from t group by a;
select a, b, sum(c) from t group by a, b;
select a from t group by a having count(*) > 1;
select a from t having count(*) > 1;
select a from t group by a + 1, (b);
select * from t order by a;
select * from t order by a asc;
select * from t order by a desc;
select * from t order by a, b desc, c asc;
select * from t order by 1, 2;
select a + b from t order by a + b desc;
select a, count(*) from t where b = 1 group by a having count(*) > 2 order by 2 desc;
select * from t order by (select max(b) from u);
select a from t order by case when a = 1 then 0 else 1 end;
select a from t union select a from u;
select a from t union all select a from u;
select a from t except select a from u;
select a from t except all select a from u;
select a from t intersect select a from u;
select a from t intersect all select a from u;
select a from t union select a from u union select a from v;
select a from t union all select a from u except select a from v intersect select a from w;
(select a from t);
(select a from t) union (select a from u);
select a from t union (select a from u union select a from v);
(select a from t union select a from u) except select a from v;
((select a from t));
select a from t union select a from u order by a;
(select a from t union select a from u) order by 1 desc;
select a from t union ((select a from u) intersect (select a from v));
select * from t where a in (select a from u union select a from v);
select * from t where a in ((select a from u) union all (select a from v));
select (select a from u union select b from v) from t;
select a from t where a in (select a from u order by a);
select (select 1) from t;
select (select max(a) from u where u.b = t.b) as m from t;
select * from t where a = (select (select 1));
select ((select 1));
select (select (select (select 1)));
select exists_col from t;
select * from t where exists (select * from u where exists (select * from v where v.a = u.a));
select * from (select * from (select * from t) x) y;
select a from t where b in (select b from u where c in (select c from v where d = 1));
select o.id, c.name, sum(l.qty * l.price) as total from orders o join customers c on c.id = o.customer_id left join lines l on l.order_id = o.id where o.created >= {d '2024-01-01'} group by o.id, c.name having sum(l.qty * l.price) > 100 order by total desc;
select e.name, d.name as dept from employees e left outer join departments d on d.id = e.dept_id where e.salary > (select avg(salary) from employees) order by e.name;
select p.category, count(distinct p.id), min(p.price), max(p.price) from products p where p.active = 1 and p.name not like 'test%' group by p.category;
select u.id from users u where not exists (select * from bans b where b.user_id = u.id) and u.created between {d '2020-01-01'} and {d '2021-01-01'};
select a.x, b.y from a full outer join b on a.k = b.k where a.x is null or b.y is null;
select distinct t1.a, t2.b from t1, t2 where t1.id = t2.id and (t1.c = 'x' or t2.c = 'y') order by t1.a, t2.b desc;
select sum(case when status = 'ok' then 1 else 0 end) as ok, sum(case when status <> 'ok' then 1 else 0 end) as failed from jobs;
select name from sys.tables where type = 'U' and name like 'tmp%' escape '\';
select x.a, y.b, z.c from x join y on y.id = x.id join z on z.id = y.id and z.kind in (1, 2, 3) where x.flag = 1;
SELECT DISTINCT * FROM T;
select
distinct
* from t;
SELECT 1, 2, 3;
select
1,
2, 3;
SELECT A 'X' FROM T;
SELECT A AS "MY ALIAS" FROM T;
SELECT A.B.C.D FROM T;
select
a.b.c.d
from t;
SELECT * FROM DB..T;
select
*
from db..t;
SELECT "MY COL" FROM "MY TABLE";
SELECT NAME, TYPE, DATA FROM CATALOG_NAME;
select
name,
type, data from catalog_name;
SELECT 'IT''S';
SELECT { D '2020-01-31' };
SELECT -A FROM T;
select
-a
from t;
SELECT 1 - -1;
select
1
- -1;
SELECT COUNT(ALL A) FROM T;
select
count(all
a) from t;
SELECT F(G(H(1))) FROM T;
select
f(g(h(1)))
from t;
SELECT COUNT(*) + 1 FROM T;
select
count(*)
+ 1 from t;
SELECT CASE WHEN A = 1 THEN 1 WHEN A = 2 OR B = 3 THEN 2 END FROM T;
select
case
when a = 1 then 1 when a = 2 or b = 3 then 2 end from t;
SELECT CAST(A AS INTEGER) FROM T;
select
cast(a
as integer) from t;
SELECT CAST(A AS SERIAL4) FROM T;
select
cast(a
as serial4) from t;
SELECT CAST(A AS CHAR) FROM T;
select
cast(a
as char) from t;
SELECT CAST(A AS BYTEA) FROM T;
select
cast(a
as bytea) from t;
SELECT CAST(A AS INET) FROM T;
select
cast(a
as inet) from t;
SELECT CAST(A AS POLYGON) FROM T;
select
cast(a
as polygon) from t;
SELECT CAST(A AS BIT(1)) FROM T;
select
cast(a
as bit(1)) from t;
SELECT CAST(A AS NUMERIC(10, 2)) FROM T;
select
cast(a
as numeric(10, 2)) from t;
SELECT CAST(A AS TIMESTAMP(6) WITH TIME ZONE) FROM T;
select
cast(a
as timestamp(6) with time zone) from t;
SELECT * FROM T WHERE A = 1;
select
*
from t where a = 1;
SELECT * FROM T WHERE A !< 1;
select
*
from t where a !< 1;
SELECT * FROM T WHERE A NOT LIKE B ESCAPE C;
select
*
from t where a not like b escape c;
SELECT * FROM T WHERE EXISTS (SELECT * FROM U);
select
*
from t where exists (select * from u);
SELECT * FROM T WHERE IS NULL;
select
*
from t where is null;
SELECT * FROM T WHERE NOT (A = 1 AND B = 2);
select
*
from t where not (a = 1 and b = 2);
SELECT * FROM T WHERE A = 1 OR B = 2 AND C = 3;
select
*
from t where a = 1 or b = 2 and c = 3;
SELECT * FROM T WHERE (SELECT COUNT(*) FROM U) > 0;
select
*
from t where (select count(*) from u) > 0;
SELECT * FROM T WHERE CASE WHEN A = 1 THEN B END = 2;
select
*
from t where case when a = 1 then b end = 2;
SELECT * FROM T1 CROSS JOIN T2;
select
*
from t1 cross join t2;
SELECT * FROM T1 FULL JOIN T2 ON T1.A = T2.A;
select
*
from t1 full join t2 on t1.a = t2.a;
SELECT * FROM T1 JOIN T2, T3 ON T1.A = T3.A;
select
*
from t1 join t2, t3 on t1.a = t3.a;
SELECT * FROM (T1, T2);
select
*
from (t1, t2);
SELECT * FROM (SELECT A FROM T) 'X';
SELECT * FROM F() AS X;
select
*
from f() as x;
SELECT * FROM T AS TYPE;
select
*
from t as type;
SELECT A, B, SUM(C) FROM T GROUP BY A, B;
select
a,
b, sum(c) from t group by a, b;
SELECT * FROM T ORDER BY A, B DESC, C ASC;
select
*
from t order by a, b desc, c asc;
SELECT A FROM T UNION ALL SELECT A FROM U;
select
a
from t union all select a from u;
(SELECT A FROM T);
(select
a
from t);
SELECT A FROM T UNION ((SELECT A FROM U) INTERSECT (SELECT A FROM V));
select
a
from t union ((select a from u) intersect (select a from v));
SELECT * FROM T WHERE A = (SELECT (SELECT 1));
select
*
from t where a = (select (select 1));
SELECT O.ID, C.NAME, SUM(L.QTY * L.PRICE) AS TOTAL FROM ORDERS O JOIN CUSTOMERS C ON C.ID = O.CUSTOMER_ID LEFT JOIN LINES L ON L.ORDER_ID = O.ID WHERE O.CREATED >= {D '2024-01-01'} GROUP BY O.ID, C.NAME HAVING SUM(L.QTY * L.PRICE) > 100 ORDER BY TOTAL DESC;
SELECT NAME FROM SYS.TABLES WHERE TYPE = 'U' AND NAME LIKE 'TMP%' ESCAPE '\';
select "Größe" - 1, 'naïve', a - b from "Straße" s where s."Größe" - 1 > 0 and 'é' <> x - 2;
select "any", "case", "some", "all" from "from";
select count(*) as "count", sum(x) "sum", avg(y) as [avg] from "order" as "group";
select [date], "time", [timestamp] "zone" from "date"."date" "interval";
select '3' as "One", '3' as One, '3' as 'ONE', "One" = 3, [oNe] = 4;
select "Mixed"."Case", mixed.case_ from "Mixed", mixed;
select "my col", [my col] "a b", "a""b" [x"y], "it's" from "my schema"."my table";
select "1st", [2nd] from "3rd" "4th" join "5th" on "4th"."1st" = "5th"."1st";
select * from db.."order", [db]..[t], .."select" where "order"."by" = [t]."asc";
select "where".* , "select".x from "where", (select "when" from "then") as "select" ("else");
select "left"("right") from t inner join "inner" on "left" = "inner"."join";
select cast("null" as "date"), cast(x as "s"."Type") from "is" where "not" is not null;
select a from t group by "group" having max("max") > 1 order by "order" desc, "desc";
select x from t union select "union" from "except" except select "intersect" from [all];
select c.* from t "c" where exists (select 1 from "exists" e where e."in" in (1, 2));
select * from [][ tx], [a][][b], [][] "x";
