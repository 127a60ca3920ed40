#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace tolm::service {

/// What an answer can say; each has its code on the wire and its HTTP status in one table.
enum class Answer {
    Success,
    NameClash,
    Busy,
    BadRequest,
    IllFormed,
    BadRow,
    NotSignedIn,
    WrongSecret,
    NoMember,
    UnknownPath,
    UnknownProject,
    UnknownTemplate,
    WrongMethod,
    AlreadyFilled,
    NeverFilled,
    VersionAhead,
    TooLarge,
    UnsupportedMedia,
    Internal,
};

struct AnswerRow {
    Answer answer;
    std::string_view code;
    int httpStatus;
    std::string_view message; ///< what is said when there is nothing closer to say
};

const AnswerRow& RowOf(Answer answer);

/// A request or a file that is refused: nothing was changed. The message is meant for whoever sent it.
class Refusal : public std::runtime_error {
public:
    Refusal(Answer answer, const std::string& message) : std::runtime_error(message), m_answer(answer) {}
    explicit Refusal(Answer answer) : Refusal(answer, std::string(RowOf(answer).message)) {}
    Answer What() const { return m_answer; }

private:
    Answer m_answer;
};

/// The envelope around a payload that is JSON text already.
std::string SuccessEnvelope(std::string_view data);
/// The envelope of a refusal: code and "msg", "data" null.
std::string RefusalEnvelope(Answer answer, std::string_view message);

} // namespace tolm::service
