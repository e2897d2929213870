#pragma once

#include <string>
#include <string_view>

#include "service/store/Database.h"

namespace quilloservice {

extern Dialect const kPostgresqlDialect;

/// Translates a statement: numbers the question marks, and quotes the column `user`, which is a
/// reserved word that would silently mean the role.
std::string ToPostgresql(std::string_view sql);

/// Translates the statements of a SchemaStep.
std::string SchemaToPostgresql(std::string_view sql);

}  // namespace quilloservice
