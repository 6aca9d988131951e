-- The database of the model round trip: a small shop whose tables are linked by foreign
-- keys, with NULLs in most columns that may hold one.

create table regions (id integer primary key, name text not null);
create table countries (id integer primary key, region_id integer references regions(id),
                        name text not null, population integer);
create table customers (id integer primary key, country_id integer references countries(id),
                        name text, segment text, credit real);
create table employees (id integer primary key, manager_id integer references employees(id),
                        country_id integer references countries(id), name text, salary integer);
create table suppliers (id integer primary key, country_id integer references countries(id), name text);
create table categories (id integer primary key, parent_id integer references categories(id), name text);
create table products (id integer primary key, category_id integer references categories(id),
                       supplier_id integer references suppliers(id), name text, price real);
create table orders (id integer primary key, customer_id integer references customers(id),
                     employee_id integer references employees(id), order_date text, status text);
create table order_items (order_id integer references orders(id),
                          product_id integer references products(id), qty integer, discount real,
                          primary key (order_id, product_id));

-- The rows are made by formulas, so that every table has rows of each kind: NULLs in
-- most columns that may hold one, letter case variants of text, rows matching the
-- conditions of the statements and rows that do not.
begin;
insert into regions values (1, 'North'), (2, 'South'), (3, 'East'), (4, 'West');
insert into countries
with recursive n(i) as (select 1 union all select i + 1 from n where i < 12)
select i, case when i % 6 = 0 then null else i * 7 % 4 + 1 end, 'Country' || i,
       i * 37813 % 90000 + 5000 from n;
insert into customers
with recursive n(i) as (select 1 union all select i + 1 from n where i < 60)
select i, case when i % 9 = 0 then null when i % 4 = 1 and i < 12 then i else i * 7 % 12 + 1 end,
       case when i % 5 = 0 then 'Ann ' else 'Bob ' end || i,
       case i * 3 % 5 when 0 then 'corporate' when 1 then 'public' when 2 then 'retail'
                      when 3 then 'Retail' else 'corporate' end,
       case when i % 7 = 0 then null else i * 1237 % 4800 + 0.5 end from n;
insert into employees
with recursive n(i) as (select 1 union all select i + 1 from n where i < 15)
select i, case when i <= 2 then null else i * 5 % (i - 1) + 1 end, i * 5 % 12 + 1,
       'Emp' || i, i * 2731 % 6000 + 2000 from n;
insert into suppliers
with recursive n(i) as (select 1 union all select i + 1 from n where i < 10)
select i, case when i % 4 = 0 then null else i * 5 % 12 + 1 end, 'Sup' || i from n;
insert into categories
with recursive n(i) as (select 1 union all select i + 1 from n where i < 8)
select i, case when i <= 3 then null else i % 2 + 2 end, 'Cat' || i from n;
insert into products
with recursive n(i) as (select 1 union all select i + 1 from n where i < 40)
select i, i * 3 % 8 + 1, case when i % 10 = 0 then null else i * 7 % 10 + 1 end, 'Prod' || i,
       i * 97 % 290 + 0.25 from n;
insert into orders
with recursive n(i) as (select 1 union all select i + 1 from n where i < 300)
select i, case when i % 25 = 0 then null when i % 30 = 7 and i < 60 then i
                 else (i * i * 7 + i * 3) % 57 + 1 end,
       case when i % 11 = 0 then null else i * 13 % 15 + 1 end,
       printf('2024-%02d-%02d', i * 7 % 9 + 1, i * 11 % 28 + 1),
       case i * 3 % 4 when 0 then 'open' when 1 then 'closed' when 2 then 'shipped'
                      else 'cancelled' end from n;
insert into order_items
with recursive k(j) as (select 1 union all select j + 1 from k where j < 4)
select o.id, (o.id * 13 + j * 17) % 40 + 1, o.id * j * 7 % 20 + 1,
       case when (o.id + j) % 3 = 0 then 0.1 else 0 end
from orders o join k on j <= o.id * 7 % 4 + 1;
commit;
