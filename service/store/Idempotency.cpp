#include "service/store/Idempotency.h"

#include "service/base/ApiError.h"
#include "service/base/Digest.h"
#include "service/base/Text.h"
#include "service/store/Database.h"

namespace quilloservice {

std::optional<std::string> FindRepeatedText(Database& database, IdempotentRequest const& request,
                                            std::int64_t now) {
    database.Run("DELETE FROM idempotency_keys WHERE used_at <= ?", now - kKeySeconds);
    Statement row =
        database.Query("SELECT request, result FROM idempotency_keys WHERE user = ? AND key = ?",
                       request.user, request.key);
    if (!row.Next()) return std::nullopt;
    if (row.Text(0) != ToHex(Sha256(request.request))) {
        throw ApiError::Conflict("This Idempotency-Key was used for another request.");
    }
    return row.Text(1);
}

void RememberResultText(Database& database, IdempotentRequest const& request,
                        std::string const& result, std::int64_t now) {
    database.Run(
        "INSERT INTO idempotency_keys (user, key, request, result, used_at) "
        "VALUES (?, ?, ?, ?, ?)",
        request.user, request.key, ToHex(Sha256(request.request)), result, now);
}

}  // namespace quilloservice
