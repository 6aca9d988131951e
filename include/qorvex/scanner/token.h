#pragma once

#include <cstdint>
#include <string_view>

#include "qorvex/sql_export.h"

namespace qorvex {

// Token kinds of the SQL-92 dialect. The numbers are part of the grammar's contract and
// are exactly these; 10 to 169, where not punctuation, are the keywords (120 to 169 are
// the non-reserved ones that may stand as names).
enum TqxTokenKind : std::int32_t {
  tkEof = 0,                            // end of input
  tkInteger = 1,                        // integer literal
  tkDecimal = 2,                        // decimal literal
  tkEscape = 3,                         // escape literal {d '...'}
  tkIdentifier = 4,                     // identifier (before the keyword check)
  tkQuotedIdentifier = 5,               // "name" or [name]
  tkHex = 6,                            // 0x1F
  tkString = 7,                         // 'text'
  tkParameter = 8,                      // @name
  tkSemicolon = 9,                      // ;
  tkKwOrder = 10,                       // order
  tkKwBy = 11,                          // by
  tkComma = 12,                         // ,
  tkKwAsc = 13,                         // asc
  tkKwDesc = 14,                        // desc
  tkKwUnion = 15,                       // union
  tkKwExcept = 16,                      // except
  tkKwIntersect = 17,                   // intersect
  tkKwAll = 18,                         // all
  tkLParen = 19,                        // (
  tkRParen = 20,                        // )
  tkKwWhere = 21,                       // where
  tkKwHaving = 22,                      // having
  tkKwSelect = 23,                      // select
  tkKwDistinct = 24,                    // distinct
  tkKwGroup = 25,                       // group
  tkStar = 26,                          // *
  tkEqual = 27,                         // =
  tkDotStar = 28,                       // .*
  tkKwAs = 29,                          // as
  tkKwFrom = 30,                        // from
  tkKwCross = 31,                       // cross
  tkKwJoin = 32,                        // join
  tkKwInner = 33,                       // inner
  tkKwLeft = 34,                        // left
  tkKwRight = 35,                       // right
  tkKwFull = 36,                        // full
  tkKwOuter = 37,                       // outer
  tkKwOn = 38,                          // on
  tkKwOr = 39,                          // or
  tkKwAnd = 40,                         // and
  tkKwNot = 41,                         // not
  tkKwIs = 42,                          // is
  tkKwNull = 43,                        // null
  tkKwLike = 44,                        // like
  tkKwEscape = 45,                      // escape
  tkKwBetween = 46,                     // between
  tkKwIn = 47,                          // in
  tkKwExists = 48,                      // exists
  tkKwSome = 49,                        // some
  tkKwAny = 50,                         // any
  tkPlus = 51,                          // +
  tkMinus = 52,                         // -
  tkSlash = 53,                         // /
  tkPercent = 54,                       // %
  tkTilde = 55,                         // ~
  tkKwCurrentTimestamp = 56,            // current_timestamp
  tkKwCurrentUser = 57,                 // current_user
  tkKwSessionUser = 58,                 // session_user
  tkKwSystemUser = 59,                  // system_user
  tkKwCase = 60,                        // case
  tkKwWhen = 61,                        // when
  tkKwThen = 62,                        // then
  tkKwElse = 63,                        // else
  tkKwEnd = 64,                         // end
  tkDot = 65,                           // .
  tkKwBigint = 66,                      // bigint
  tkKwInt8 = 67,                        // int8
  tkKwBigserial = 68,                   // bigserial
  tkKwSerial8 = 69,                     // serial8
  tkKwBit = 70,                         // bit
  tkKwVarbit = 71,                      // varbit
  tkKwVarchar = 72,                     // varchar
  tkKwCharacter = 73,                   // character
  tkKwChar = 74,                        // char
  tkKwInterval = 75,                    // interval
  tkKwNumeric = 76,                     // numeric
  tkKwDecimal = 77,                     // decimal
  tkKwBoolean = 78,                     // boolean
  tkKwBool = 79,                        // bool
  tkKwBox = 80,                         // box
  tkKwBytea = 81,                       // bytea
  tkKwCidr = 82,                        // cidr
  tkKwCircle = 83,                      // circle
  tkKwDate = 84,                        // date
  tkKwDouble = 85,                      // double
  tkKwPrecision = 86,                   // precision
  tkKwFloat8 = 87,                      // float8
  tkKwInet = 88,                        // inet
  tkKwInteger = 89,                     // integer
  tkKwInt = 90,                         // int
  tkKwInt4 = 91,                        // int4
  tkKwLine = 92,                        // line
  tkKwLseg = 93,                        // lseg
  tkKwMacaddr = 94,                     // macaddr
  tkKwMoney = 95,                       // money
  tkKwPath = 96,                        // path
  tkKwPoint = 97,                       // point
  tkKwPolygon = 98,                     // polygon
  tkKwReal = 99,                        // real
  tkKwFloat4 = 100,                     // float4
  tkKwSmallint = 101,                   // smallint
  tkKwInt2 = 102,                       // int2
  tkKwSerial = 103,                     // serial
  tkKwSerial4 = 104,                    // serial4
  tkKwText = 105,                       // text
  tkKwTime = 106,                       // time
  tkKwTimetz = 107,                     // timetz
  tkKwTimestamp = 108,                  // timestamp
  tkKwTimestamptz = 109,                // timestamptz
  tkKwVarying = 110,                    // varying
  tkKwWithout = 111,                    // without
  tkKwZone = 112,                       // zone
  tkKwWith = 113,                       // with
  tkKwAvg = 114,                        // avg
  tkKwMax = 115,                        // max
  tkKwMin = 116,                        // min
  tkKwSum = 117,                        // sum
  tkKwCount = 118,                      // count
  tkKwCast = 119,                       // cast
  tkKwAda = 120,                        // ada
  tkKwC = 121,                          // c
  tkKwCatalogName = 122,                // catalog_name
  tkKwCharacterSetCatalog = 123,        // character_set_catalog
  tkKwCharacterSetName = 124,           // character_set_name
  tkKwCharacterSetSchema = 125,         // character_set_schema
  tkKwClassOrigin = 126,                // class_origin
  tkKwCobol = 127,                      // cobol
  tkKwCollationCatalog = 128,           // collation_catalog
  tkKwCollationName = 129,              // collation_name
  tkKwCollationSchema = 130,            // collation_schema
  tkKwColumnName = 131,                 // column_name
  tkKwCommandFunction = 132,            // command_function
  tkKwCommitted = 133,                  // committed
  tkKwConditionNumber = 134,            // condition_number
  tkKwConnectionName = 135,             // connection_name
  tkKwConstraintCatalog = 136,          // constraint_catalog
  tkKwConstraintName = 137,             // constraint_name
  tkKwConstraintSchema = 138,           // constraint_schema
  tkKwCursorName = 139,                 // cursor_name
  tkKwData = 140,                       // data
  tkKwDatetimeIntervalCode = 141,       // datetime_interval_code
  tkKwDatetimeIntervalPrecision = 142,  // datetime_interval_precision
  tkKwDynamicFunction = 143,            // dynamic_function
  tkKwFortran = 144,                    // fortran
  tkKwLength = 145,                     // length
  tkKwMessageLength = 146,              // message_length
  tkKwMessageOctetLength = 147,         // message_octet_length
  tkKwMessageText = 148,                // message_text
  tkKwMore = 149,                       // more
  tkKwMumps = 150,                      // mumps
  tkKwName = 151,                       // name
  tkKwNullable = 152,                   // nullable
  tkKwNumber = 153,                     // number
  tkKwPascal = 154,                     // pascal
  tkKwPli = 155,                        // pli
  tkKwRepeatable = 156,                 // repeatable
  tkKwReturnedLength = 157,             // returned_length
  tkKwReturnedOctetLength = 158,        // returned_octet_length
  tkKwReturnedSqlstate = 159,           // returned_sqlstate
  tkKwRowCount = 160,                   // row_count
  tkKwScale = 161,                      // scale
  tkKwSchemaName = 162,                 // schema_name
  tkKwSerializable = 163,               // serializable
  tkKwServerName = 164,                 // server_name
  tkKwSubclassOrigin = 165,             // subclass_origin
  tkKwTableName = 166,                  // table_name
  tkKwType = 167,                       // type
  tkKwUncommitted = 168,                // uncommitted
  tkKwUnnamed = 169,                    // unnamed
  tkNotEqual = 170,                     // <>
  tkBangEqual = 171,                    // !=
  tkLessEqual = 172,                    // <=
  tkBangGreater = 173,                  // !>
  tkLess = 174,                         // <
  tkGreaterEqual = 175,                 // >=
  tkBangLess = 176,                     // !<
  tkGreater = 177,                      // >
  tkError = 178,                        // anything no rule accepts
};

inline constexpr std::int32_t kFirstNonReservedKeyword = tkKwAda;
inline constexpr std::int32_t kLastNonReservedKeyword = tkKwUnnamed;

// One scanned token: kind (0 is the end of input), 0-based position counted in
// characters (a CR LF pair and a multi-byte UTF-8 character each count as one), 1-based
// line and column, and the text as typed (quotes and brackets included; "EOF" for the
// end token). `offset` is the byte offset of the text in the input, so that callers can
// slice the input (the end token's offset is the input's length).
//
// `val` views the text the scanner read rather than owning a copy: a scanner keeps its
// own copy of a text given to Init, so a token's text is valid as long as the scanner
// that made it (or, for texts the scanner reads in place, as long as that text). Copy
// it into a string to keep it longer.
struct QORVEX_SQL_EXPORT TqxToken {
  std::int32_t kind = 0;
  std::int32_t pos = 0;
  std::int32_t col = 0;
  std::int32_t line = 0;
  std::string_view val;
  std::int32_t offset = 0;
};

}  // namespace qorvex
