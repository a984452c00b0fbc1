#include "platform/host/ByteReader.h"
#include "platform/xfile/Tokens.h"

#include <cmath>
#include <limits>

namespace ql::xfile {
namespace {

/// Token codes; each is a 16-bit number.
enum class Code : std::uint16_t {
  Name = 1,
  String = 2,
  Integer = 3,
  Guid = 5,
  IntegerList = 6,
  RealList = 7,
  OpenBrace = 10,
  CloseBrace = 11,
  Comma = 19,
  Semicolon = 20,
  Template = 31,
};
constexpr std::size_t kIntegerSize = 4;

}  // namespace

template <class T>
T BinaryTokens::take() {
  const T value = host::ByteReader(bytes_).at<T>(at_, "binary token");
  at_ += sizeof(T);
  return value;
}

std::string_view BinaryTokens::takeText() {
  const auto length = take<std::uint32_t>();
  const std::span<const std::byte> text = host::ByteReader(bytes_).range(at_, length, "text of a token");
  at_ += length;
  return {reinterpret_cast<const char*>(text.data()), text.size()};
}

Token BinaryTokens::next() {
  at_ += numbersLeft_ * (reals_ ? realSize_ : kIntegerSize);
  numbersLeft_ = 0;
  while (remaining() >= sizeof(Code)) {
    const Code code = take<Code>();
    switch (code) {
      case Code::Name:
        return {TokenKind::Name, takeText(), {}};
      case Code::String:
        return {TokenKind::Text, takeText(), {}};
      case Code::Integer:
        numbersLeft_ = 1, reals_ = false;
        host::ByteReader(bytes_).range(at_, kIntegerSize, "number");
        return {TokenKind::Number, {}, {}};
      case Code::Guid:
        return {TokenKind::Identifier, {}, take<Guid>()};
      case Code::IntegerList:
      case Code::RealList: {
        reals_ = code == Code::RealList;
        const auto count = take<std::uint32_t>();
        host::ByteReader(bytes_).range(at_, std::uint64_t{count} * (reals_ ? realSize_ : kIntegerSize), "number list");
        numbersLeft_ = count;
        return {TokenKind::Number, {}, {}};
      }
      case Code::OpenBrace:
        return {TokenKind::Open, {}, {}};
      case Code::CloseBrace:
        return {TokenKind::Close, {}, {}};
      case Code::Template:
        return {TokenKind::Template, {}, {}};
      case Code::Comma:
      case Code::Semicolon:
        break;
      default:
        return {TokenKind::Other, {}, {}};
    }
  }
  at_ = bytes_.size();
  return {};
}

void BinaryTokens::startNumbers() {
  while (numbersLeft_ == 0) {
    const std::size_t before = at_;
    const Token token = next();
    if (token.kind != TokenKind::Number && token.kind != TokenKind::Identifier)
      throw host::FileFault(host::Fault::BadEncoding, "number", before);
  }
  --numbersLeft_;
}

float BinaryTokens::real() {
  startNumbers();
  if (!reals_) return static_cast<float>(take<std::int32_t>());
  if (realSize_ != sizeof(double)) return finite(take<float>());
  const double value = take<double>();
  return std::abs(value) <= std::numeric_limits<float>::max() ? static_cast<float>(value) : 0.0F;
}

std::uint32_t BinaryTokens::count() {
  startNumbers();
  if (!reals_) return take<std::uint32_t>();
  const double value = realSize_ == sizeof(double) ? take<double>() : double{take<float>()};
  return value >= 0 && value < std::numeric_limits<std::uint32_t>::max() ? static_cast<std::uint32_t>(value)
                                                                         : std::numeric_limits<std::uint32_t>::max();
}

std::string BinaryTokens::quoted() {
  const std::size_t before = at_;
  const Token token = next();
  if (token.kind != TokenKind::Text) throw host::FileFault(host::Fault::BadEncoding, "quoted text", before);
  return std::string(token.text);
}

}  // namespace ql::xfile
