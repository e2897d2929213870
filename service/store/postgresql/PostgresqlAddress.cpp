#include "service/store/postgresql/PostgresqlAddress.h"

#include <libpq-fe.h>

#include <algorithm>
#include <map>
#include <memory>
#include <stdexcept>

namespace quilloservice {

namespace {

// A server that does not respond must fail requests, not hold them.
std::map<std::string, std::string> const kDefaults = {{"application_name", "quillo-service"},
                                                      {"client_encoding", "UTF8"},
                                                      {"connect_timeout", "5"},
                                                      {"tcp_user_timeout", "10000"}};

// Statements look rows up by an index. A sequential scan, which the planner prefers for small
// tables, would make a serializable transaction collide with every other one on the table.
constexpr char const* kSessionOptions = "-c enable_seqscan=off ";

std::map<std::string, std::string> Parse(std::string const& url) {
    char* message = nullptr;
    std::unique_ptr<PQconninfoOption, decltype(&PQconninfoFree)> options(
        PQconninfoParse(url.c_str(), &message), PQconninfoFree);
    PQfreemem(message);  // it may contain parts of the password
    if (!options) {
        throw std::runtime_error(
            "the database's address is malformed; it has the form "
            "postgresql://user@host:port/name, with % and two digits for special characters");
    }
    std::map<std::string, std::string> values;
    for (PQconninfoOption const* option = options.get(); option->keyword != nullptr; ++option) {
        if (option->val != nullptr) values.emplace(option->keyword, option->val);
    }
    return values;
}

std::string Quote(std::string const& value) {
    std::string quoted = "'";
    for (char c : value) {
        if (c == '\'' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + "'";
}

void ReplaceAll(std::string& text, std::string const& from, std::string const& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
}

}  // namespace

PostgresqlAddress::PostgresqlAddress(std::string const& url) {
    auto values = Parse(url);
    for (char const* secret : {"password", "sslpassword"}) {
        if (!values[secret].empty()) secrets.push_back(values[secret]);
    }
    name = "postgresql://" + values["host"] + (values["port"].empty() ? "" : ":" + values["port"]) +
           "/" + values["dbname"];
    values["options"] = kSessionOptions + values["options"];
    values.insert(kDefaults.begin(), kDefaults.end());
    for (auto const& [keyword, value] : values) {
        if (!value.empty()) parameters += keyword + "=" + Quote(value) + " ";
    }
}

std::string PostgresqlAddress::Clean(std::string message) const {
    for (std::string const& secret : secrets)
        ReplaceAll(message, secret, "***");
    while (!message.empty() && message.back() == '\n')
        message.pop_back();
    std::replace(message.begin(), message.end(), '\n', ' ');
    return message;
}

}  // namespace quilloservice
