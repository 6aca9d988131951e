#pragma once

// Every syntax-tree node class: names, types, expressions, FROM sources and queries.

#include "qorvex/ast/expressions.h"
#include "qorvex/ast/from.h"
#include "qorvex/ast/names.h"
#include "qorvex/ast/node.h"
#include "qorvex/ast/query.h"
#include "qorvex/ast/types.h"
