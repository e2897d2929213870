#include "service/store/Database.h"

namespace quilloservice {

Statement::Statement(Database& database, std::string sql) : database(database) {
    if (auto idle = database.idle.find(sql); idle != database.idle.end()) {
        entry = database.idle.extract(idle);
        return;
    }
    auto prepared = database.Prepare(sql);
    Cache made;
    entry = made.extract(made.emplace(std::move(sql), std::move(prepared)));
}

Statement::~Statement() {
    Prepared().Reset();
    database.idle.insert(std::move(entry));
}

}  // namespace quilloservice
