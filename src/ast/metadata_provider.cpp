#include "qorvex/ast/metadata_provider.h"

#include "qorvex/ast/names.h"

namespace qorvex {

TSQLMetadataRelation::TSQLMetadataRelation() = default;

TSQLMetadataRelation::~TSQLMetadataRelation() = default;

}  // namespace qorvex
