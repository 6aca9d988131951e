#pragma once

// The whole query model: builder core, queries and unions, datasources and links, the
// select list, control owners and the SQL builder components.
#include "qorvex/model/control_owner.h"
#include "qorvex/model/controls.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"
#include "qorvex/model/query_builder.h"
#include "qorvex/model/select_list.h"
#include "qorvex/model/sql_builder.h"
#include "qorvex/model/types.h"
