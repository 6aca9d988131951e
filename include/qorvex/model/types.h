#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "qorvex/model_export.h"

namespace qorvex {

// Enumerations shared by the query model and the designer.

// What one end of a link stands for in a foreign key: the key side or the referencing side.
enum TqxQueryBuilderLinkCardinality { qblcUnknown, qblcOne, qblcMany };
// The vertical edge of a datasource box a link end leaves from.
enum TqxQueryBuilderLinkConnectToSide { csLeft, csRight };
// Whether the rows of one end's datasource are all kept (outer) by the link's join.
enum TqxQueryBuilderLinkConnectType { ctInner, ctOuter };
// The sorting of a select-list row.
enum TqxQueryBuilderItemSortType { stNone, stAsc, stDesc };
// The part a select-list row plays in grouping, and so where its criteria are written.
enum TqxQueryBuilderGroupByType {
  gtExpression,
  gtGroupBy,
  gtHaving,
  gtWhere,
  gtAggregateStar,
  gtAggregate
};

// A set of group-by types.
class QORVEX_MODEL_EXPORT TqxQueryBuilderGroupByTypes {
 public:
  constexpr TqxQueryBuilderGroupByTypes() = default;
  constexpr TqxQueryBuilderGroupByTypes(std::initializer_list<TqxQueryBuilderGroupByType> Types) {
    for (TqxQueryBuilderGroupByType type : Types)
      Bits_ |= Bit(type);
  }
  constexpr bool Contains(TqxQueryBuilderGroupByType Type) const {
    return (Bits_ & Bit(Type)) != 0;
  }

 private:
  static constexpr unsigned Bit(TqxQueryBuilderGroupByType Type) {
    return 1u << static_cast<unsigned>(Type);
  }
  unsigned Bits_ = 0;
};

enum TqxUnionNavBarPosition { unbTopRight, unbTopLeft, unbBottomRight, unbBottomLeft };
enum TqxBkImagePos { bkipTopLeft, bkipTile };
enum TqxBkImageDarkness { bgidWhite, bgidLight, bgidDark };
enum TqxBorderStyle { qbbs3D, qbbsFlat, qbbsUltraFlat, qbbsNone };
enum TqxTabStyle { tsTabs, tsButtons, tsFlatButtons };

// A colour: 0xRRGGBB, or a system colour (high bit set, low byte the system colour's index)
// that the toolkit resolves from its palette.
using TqxColor = std::uint32_t;
inline constexpr TqxColor clSystemColor = 0x80000000u;
inline constexpr TqxColor clAppWorkSpace = clSystemColor | 12;
inline constexpr TqxColor clWindow = clSystemColor | 5;
inline constexpr TqxColor clBtnFace = clSystemColor | 15;
inline constexpr TqxColor clBtnShadow = clSystemColor | 16;
inline constexpr TqxColor clNavy = 0x000080;
inline constexpr TqxColor clWhite = 0xFFFFFF;
inline constexpr TqxColor clBlack = 0x000000;
inline constexpr bool IsSystemColor(TqxColor Color) {
  return (Color & clSystemColor) != 0;
}

// A font as the designer should use it. An empty name and a size of 0 mean the toolkit's
// default.
struct QORVEX_MODEL_EXPORT TqxFont {
  std::string Name;
  int Size = 0;
  bool Bold = false;
  bool Italic = false;
  bool Underline = false;
  TqxColor Color = clBlack;
  bool operator==(const TqxFont&) const = default;
};

// A picture: the encoded image bytes (PNG, BMP, ...) or the file they came from. Empty
// when there is no picture.
struct QORVEX_MODEL_EXPORT TqxPicture {
  std::string FileName;
  std::vector<std::uint8_t> Data;
  bool IsEmpty() const { return FileName.empty() && Data.empty(); }
  bool operator==(const TqxPicture&) const = default;
};

// A list of images for the object lists of the Add object dialog.
struct QORVEX_MODEL_EXPORT TqxImageList {
  std::vector<TqxPicture> Images;
  bool operator==(const TqxImageList&) const = default;
};

enum TqxFormPosition { poDesigned, poScreenCenter, poMainFormCenter, poOwnerFormCenter };
enum TqxListViewStyle { vsIcon, vsSmallIcon, vsList, vsReport };

// Size limits of the Add object dialog, in pixels at 96 dpi; 0 is no maximum.
struct QORVEX_MODEL_EXPORT TqxAddObjectSizeConstraints {
  int MinHeight = 342;
  int MinWidth = 294;
  int MaxHeight = 0;
  int MaxWidth = 0;
  bool operator==(const TqxAddObjectSizeConstraints&) const = default;
};

// Options of the Add object dialog, kept by the query builder. Sizes are in pixels at
// 96 dpi; the dialog scales them for the screen and its font.
struct QORVEX_MODEL_EXPORT TqxAddObjectFormOptions {
  TqxFormPosition Position = poMainFormCenter;
  TqxListViewStyle ListViewStyle = vsList;
  TqxImageList ImageListSmall;
  TqxImageList ImageListLarge;
  int ImageIndexTables = -1;
  int ImageIndexViews = -1;
  TqxAddObjectSizeConstraints Constraints;
  int Width = 294;
  int Height = 342;
  void Assign(const TqxAddObjectFormOptions& Source) { *this = Source; }
  bool operator==(const TqxAddObjectFormOptions&) const = default;
};

// A position in pixels, on the diagram or on the screen.
struct QORVEX_MODEL_EXPORT TqxPoint {
  int X = 0;
  int Y = 0;
  bool operator==(const TqxPoint&) const = default;
};

// A control's place: position and size in its parent's client coordinates.
struct QORVEX_MODEL_EXPORT TqxRect {
  int Left = 0;
  int Top = 0;
  int Width = 0;
  int Height = 0;
  bool operator==(const TqxRect&) const = default;
};

}  // namespace qorvex
