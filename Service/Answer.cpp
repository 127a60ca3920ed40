#include "Service/Answer.h"

#include "Service/JsonText.h"

#include <array>

namespace tolm::service {
namespace {

constexpr std::array kAnswers{
    AnswerRow{Answer::Success, "10000", 200, "done"},
    AnswerRow{Answer::NameClash, "10003", 200, "two rows bear the same name"},
    AnswerRow{Answer::Busy, "200100", 200, "other data of this project came in between"},
    AnswerRow{Answer::BadRequest, "40000", 400, "the request cannot be understood"},
    AnswerRow{Answer::IllFormed, "40001", 400, "the body is no well-formed JSON text in UTF-8"},
    AnswerRow{Answer::BadRow, "40002", 400, "a row is not as it has to be"},
    AnswerRow{Answer::NotSignedIn, "40100", 401, "not signed in, or the sign-in has expired"},
    AnswerRow{Answer::WrongSecret, "40101", 401, "the user id or the secret is wrong"},
    AnswerRow{Answer::NoMember, "40300", 403, "the project is for its members alone"},
    AnswerRow{Answer::UnknownPath, "40400", 404, "there is no such call"},
    AnswerRow{Answer::UnknownProject, "40401", 404, "there is no such project"},
    AnswerRow{Answer::UnknownTemplate, "40402", 404, "there is no such template"},
    AnswerRow{Answer::WrongMethod, "40500", 405, "this call is made with another method"},
    AnswerRow{Answer::AlreadyFilled, "40901", 409, "the project has settings already"},
    AnswerRow{Answer::NeverFilled, "40902", 409, "the project has no settings yet"},
    AnswerRow{Answer::VersionAhead, "40903", 409, "the project has not reached this version; load everything anew"},
    AnswerRow{Answer::TooLarge, "41300", 413, "the request is too large"},
    AnswerRow{Answer::UnsupportedMedia, "41500", 415, "the body has to be JSON"},
    AnswerRow{Answer::Internal, "50000", 500, "the service has met a fault of its own; its log tells more"},
};

constexpr bool InOrder() {
    for (std::size_t i = 0; i < kAnswers.size(); ++i) {
        if (kAnswers[i].answer != static_cast<Answer>(i))
            return false;
    }
    return kAnswers.size() == static_cast<std::size_t>(Answer::Internal) + 1;
}
static_assert(InOrder(), "one row for each answer, in the order of the enumeration");

} // namespace

const AnswerRow& RowOf(Answer answer) {
    return kAnswers.at(static_cast<std::size_t>(answer));
}

std::string SuccessEnvelope(std::string_view data) {
    constexpr std::string_view head = R"({"code":"10000","data":)";
    std::string envelope;
    envelope.reserve(head.size() + data.size() + 1);
    envelope.append(head).append(data).append("}");
    return envelope;
}

std::string RefusalEnvelope(Answer answer, std::string_view message) {
    std::string envelope = R"({"code":")";
    envelope.append(RowOf(answer).code).append(R"(","data":null,"msg":)");
    envelope.append(QuotedJson(message)).append("}");
    return envelope;
}

} // namespace tolm::service
