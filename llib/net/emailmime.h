// The pieces of a mail message that do not depend on the connection: the Date header, subjects
// and attachment names as RFC 2047 encoded words, the multipart boundary, the content type of an
// attachment, and where an over-long text line is cut.
#pragma once

#include <ctime>
#include <cstddef>
#include <string>
#include <string_view>

// Where an encoded text goes: a header's free text (the subject), or a quoted parameter value
// (an attachment's name="..."), which must not hold '"' or '\' either.
enum class LRFC2047Use { kHeaderText, kQuotedParameter };

// Sets out to text itself when it is plain printable ASCII, otherwise to "=?utf-8?B?...?="
// encoded words of at most 75 characters each, cut between UTF-8 characters, separated by a
// folded line ("\r\n ") in header text and by a blank in a parameter. Control characters
// (carriage returns and line feeds included) and a "=?" that a reader would take for an encoded
// word also cause encoding, so no text can start a header line of its own.
void LRFC2047Encode(std::string& out, std::string_view text, LRFC2047Use use = LRFC2047Use::kHeaderText);

// The Date header's value for a local time: "Tue, 05 Mar 2024 14:03:09 +0100" (English day and
// month names; the year written as "20" and two digits).
std::string LEmailFormatDate(std::time_t when);

// The multipart boundary "gc0p4Jq0M2Yt08jU534c%d" with the smallest number from 0 to 99 that
// occurs in none of the texts (99 when all occur).
std::string LEmailChooseBoundary(std::string_view text, std::string_view html);

// "audio/wav" for a ".wav" file, "audio/mpeg" for ".mp3" (either in any case), else
// "application/octet-stream".
std::string_view LEmailAttachmentContentType(std::string_view path);
// The name an attachment travels under: the file's base name, at most 258 bytes, cut between
// UTF-8 characters.
std::string LEmailAttachmentName(std::string_view path);

// Longest text line sent as it is; longer lines are cut (LEmailCutLength).
inline constexpr std::size_t kEmailMaxLineBytes = 700;
// The length of the first piece of a line of more than 700 bytes: up to and including its last
// blank within the first 700 bytes, else 700 bytes moved back to the start of a UTF-8 character.
// The line's own length when it is not longer than 700 bytes.
std::size_t LEmailCutLength(std::string_view line);
