/// @file
/// Binary data streams: `PDataReader` and `PDataWriter` over a caller's byte vector, and the target
/// records with their codecs in `PDataFormaterUtils`.
///
/// Every number in a stream is carried most significant byte first. An item is one of
///
/// | item | bytes |
/// |---|---|
/// | integer | 1, 2, 4 or 8 bytes |
/// | text block | 85, length (4 bytes), payload of that length: no terminator, no padding |
/// | string item | 09, text block; the empty text is 09 85 00 00 00 00 |
/// | string list | 89, count (4 bytes), that many text blocks |
/// | tagged number | 07, value (4 bytes) |
///
/// A payload is multibyte text in the character-type locale of the process, which should be a UTF-8
/// one, the same for writer and reader; the library never sets a locale. A program without one puts
/// the items together by `PUtf8::encode` and the integers.
///
/// Lengths and counts have 32 bits. Of a text or list of 4 Gi characters or elements and more, the
/// upper bits of the number are lost without a code.
///
/// A stream may come from anyone. No reading operation looks behind the vector's end, and none
/// takes memory or time in proportion to a length or count that a stream claims but doesn't hold.
#ifndef PORTINGLAYER_DATA_STREAMS_H
#define PORTINGLAYER_DATA_STREAMS_H

#include <vector>

#include <portinglayer/export.h>
#include <portinglayer/result_codes.h>
#include <portinglayer/strings.h>

class PDataFormaterUtils;

/// Tells in which order the host keeps the bytes of an integer.
///
/// @return 1: least significant byte first, on every supported host
///
/// Threads: callable from any; the value is set while the library is loaded and never changes.
PORTINGLAYER_EXPORT int getEndianness();

/// What a reader and a writer of a data stream have in common: a position in bytes. Only a reader
/// uses it. An object is used by one thread at a time.
class PORTINGLAYER_EXPORT PDataFormater {
public:
    /// Starts at position 0.
    PDataFormater();
    virtual ~PDataFormater();

    /// Moves the position to `value` bytes from the start. Any value is accepted, also one behind
    /// the end of the stream: every read then returns PERR_DATA_SHORT until the position is set
    /// back or the stream has grown. A writer always appends, whatever its position.
    void setOffset(unsigned long value);

    /// @return the position in bytes
    unsigned long getOffset();

protected:
    unsigned long offset;  ///< bytes from the start of the stream
};

/// Reads integers and texts from a byte vector that the caller owns and keeps alive as long as the
/// reader. The vector is never copied or changed, and its size is looked at afresh by every read:
/// what is appended between two reads can be read.
///
/// A successful read leaves the position behind the item. A failed read of an integer moves
/// nothing; failed reads of strings may leave the position inside the item, as each operation says.
/// There is no operation for a single byte: single bytes are the markers inside other items.
///
/// Threads: one reader is used by one thread at a time, and nobody changes the vector meanwhile.
/// Nothing blocks.
class PORTINGLAYER_EXPORT PDataReader : public PDataFormater {
public:
    /// Reads from `bytes`, starting at position 0.
    ///
    /// @warning Never give it a temporary, such as what a function returns or a list in braces: the
    ///          reader only refers to the vector, which is gone at the end of the statement. Keep
    ///          it in a variable that outlives the reader.
    explicit PDataReader(std::vector<unsigned char> const& bytes);
    ~PDataReader() override;

    /// Reads a signed integer of 2 bytes.
    ///
    /// @param[out] value  written only on success
    /// @return PERR_OK
    /// @return PERR_DATA_SHORT  fewer than 2 bytes are left; the position stays
    [[nodiscard]] int getShort(short& value);

    /// Reads an unsigned integer of 2 bytes; otherwise as `getShort`.
    ///
    /// @return PERR_OK
    /// @return PERR_DATA_SHORT  fewer than 2 bytes are left; `value` and the position stay
    [[nodiscard]] int getWord(unsigned short& value);

    /// Reads a signed integer of 4 bytes.
    ///
    /// @param[out] value  written only on success
    /// @return PERR_OK
    /// @return PERR_DATA_SHORT  fewer than 4 bytes are left; the position stays
    [[nodiscard]] int getInt(int& value);

    /// Reads an unsigned integer of 4 bytes; otherwise as `getInt`.
    ///
    /// @return PERR_OK
    /// @return PERR_DATA_SHORT  fewer than 4 bytes are left; `value` and the position stay
    [[nodiscard]] int getDword(unsigned int& value);

    /// Reads a signed integer of 8 bytes.
    ///
    /// @param[out] value  written only on success
    /// @return PERR_OK
    /// @return PERR_DATA_SHORT  fewer than 8 bytes are left; the position stays
    [[nodiscard]] int getLong(long long& value);

    /// Reads an unsigned integer of 8 bytes; otherwise as `getLong`.
    ///
    /// @return PERR_OK
    /// @return PERR_DATA_SHORT  fewer than 8 bytes are left; `value` and the position stay
    [[nodiscard]] int getQword(unsigned long long& value);

    /// Converts multibyte bytes to text in the current locale, up to their end or the first zero
    /// byte. Uses nothing of the reader: its position and vector are left alone.
    ///
    /// @warning The name runs against its usual sense: this makes text from bytes. For the other
    ///          way call `PDataWriter::decodeUtf8`.
    /// @param[out] text  replaced; not touched when the conversion fails
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY    no memory for the work buffer (`text` stays) or for the text
    ///                           (`text` is then empty)
    /// @return PERR_DATA_DECODE  `bytes` is empty, begins with a zero byte, or holds what the
    ///                           locale cannot convert; `text` stays
    [[nodiscard]] int encodeUtf8(std::vector<unsigned char> const& bytes, PString& text);

    /// Reads a string item. Zero bytes at the end of its payload disappear: text ends at the first.
    ///
    /// @warning Not all that is read is text: whatever stands behind a zero byte is passed over,
    ///          and a locale of UTF-8 takes values above U+10FFFF. Let `PUtf8::encode` accept what
    ///          comes from strangers.
    /// @warning A marker that doesn't fit is consumed: after PERR_DATA_MARKER the next call starts
    ///          one byte further. Set the position back with `setOffset` to try something else
    ///          there.
    /// @param[out] text  replaced on success; left alone by any failure but PERR_NO_MEMORY
    /// @return PERR_OK           an empty payload makes `text` empty
    /// @return PERR_DATA_SHORT   nothing is left: the position stays; or fewer than 6 bytes were
    ///                           left: it has moved by 1; or the payload is cut: it has moved by 6
    /// @return PERR_DATA_MARKER  the first byte is not 09, or the second is not 85; the position
    ///                           has moved by 1
    /// @return PERR_DATA_DECODE  the payload converts to nothing or not at all; the position is
    ///                           behind it
    /// @return PERR_NO_MEMORY    as from `encodeUtf8`; the position is behind the payload
    [[nodiscard]] int readString(PString& text);

    /// Reads a string list and appends its texts to `list`, which is never cleared: what it held
    /// stays in front, and texts read before a failure stay.
    ///
    /// An element that cannot be read is tried again from where its reading ended, as many times as
    /// the count says, and the code of the last try is returned. An element whose marker doesn't
    /// fit thus ends the list; one whose payload is cut costs its 5 bytes of marker and length, and
    /// reading goes on behind them.
    ///
    /// @warning PERR_OK may come with fewer texts than the count announced, when a later try found
    ///          an element in what an earlier one left. Where the number matters, compare the size
    ///          of `list` before and after.
    /// @warning An empty list that ends the stream returns PERR_DATA_SHORT although it was read
    ///          whole. Where that matters, compare the position with the size of the stream.
    /// @return PERR_OK           the last element was read, or the count is 0 and more bytes follow
    /// @return PERR_DATA_SHORT   nothing is left: the position stays; or the count is cut: it has
    ///                           moved by 1; or the count is 0 at the end of the stream: it has
    ///                           moved by 5; or fewer than 5 bytes were left for the last element;
    ///                           or its payload is cut: the position is behind its length
    /// @return PERR_DATA_MARKER  the first byte is not 89: it is consumed; or the last element does
    ///                           not start with 85: the position is at that byte
    /// @return PERR_DATA_DECODE  a payload converts to nothing or not at all: the position is
    ///                           behind it and no further element is tried
    /// @return PERR_NO_MEMORY    no memory for an element or for `list` to grow: the position is
    ///                           behind the payload and no further element is tried
    [[nodiscard]] int readStrings(std::vector<PString>& list);

private:
    friend class PDataFormaterUtils;

    template <typename Integer>
    [[nodiscard]] int get(Integer& value);
    [[nodiscard]] int getTagged(unsigned char tag, unsigned int& value);
    [[nodiscard]] int getElement(std::vector<PString>& list);

    std::vector<unsigned char> const& data;  ///< the caller's
};

/// Appends integers and texts to a byte vector that the caller owns and keeps alive as long as the
/// writer. But for `eraseData` the writer only appends: it never reads or changes what the vector
/// holds. The position inherited from `PDataFormater` means nothing to it.
///
/// The operations that return nothing let the vector's std::bad_alloc through when it cannot grow,
/// and leave in it the bytes of the integer that found room; all others return PERR_NO_MEMORY.
///
/// Threads: one writer is used by one thread at a time, and nobody else uses the vector meanwhile.
/// Nothing blocks.
class PORTINGLAYER_EXPORT PDataWriter : public PDataFormater {
public:
    /// Appends to `bytes`.
    explicit PDataWriter(std::vector<unsigned char>& bytes);
    ~PDataWriter() override;

    /// Appends 1 byte: the value.
    void appendByte(unsigned char value);
    /// Appends the 2 bytes of `value`, most significant first.
    void appendShort(short value);
    /// Appends the 2 bytes of `value`, most significant first.
    void appendWord(unsigned short value);
    /// Appends the 4 bytes of `value`, most significant first.
    void appendInt(int value);
    /// Appends the 4 bytes of `value`, most significant first.
    void appendDword(unsigned int value);
    /// Appends the 8 bytes of `value`, most significant first.
    void appendLong(long long value);
    /// Appends the 8 bytes of `value`, most significant first.
    void appendQword(unsigned long long value);

    /// Empties the vector; its capacity and the position stay.
    void eraseData();

    /// Converts text to multibyte bytes in the current locale and appends them to `bytes`. Uses
    /// nothing of the writer: its own vector is left alone.
    ///
    /// Exactly as many bytes are appended as `text` has characters. A zero character ends the text:
    /// zero bytes stand for what is behind it.
    ///
    /// @warning The name runs against its usual sense: this makes bytes from text. For the other
    ///          way call `PDataReader::encodeUtf8`.
    /// @warning Text is cut at the first character that no longer fits into that number of bytes,
    ///          and the rest is filled with zero bytes: in UTF-8 only ASCII survives whole, "a"
    ///          followed by an accented letter becomes 61 00. To carry any text whole in a UTF-8
    ///          locale, write what `PUtf8::padded` makes of it.
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY    `bytes` cannot grow; nothing is appended
    /// @return PERR_DATA_ENCODE  `text` is empty or begins with a zero, its first character doesn't
    ///                           fit, or a character before the cut cannot be converted; nothing
    ///                           is appended
    [[nodiscard]] int decodeUtf8(PString const& text, std::vector<unsigned char>& bytes);

    /// Appends a string item; empty text becomes an empty payload.
    ///
    /// @warning Text that is not ASCII is cut, as `decodeUtf8` says.
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY    the stream cannot grow; nothing is appended
    /// @return PERR_DATA_ENCODE  as from `decodeUtf8`, empty text apart; nothing is appended
    [[nodiscard]] int writeString(PString const& text);

    /// Appends a string list: marker, count, a text block for each element.
    ///
    /// @warning There is no rollback: after a failure the stream holds the marker, the full count
    ///          and the elements before the failing one. Note the size before the call and resize
    ///          the vector to it.
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY    the stream cannot grow for the failing part
    /// @return PERR_DATA_ENCODE  as from `decodeUtf8`, empty text apart
    [[nodiscard]] int writeStrings(std::vector<PString> const& list);

private:
    friend class PDataFormaterUtils;

    [[nodiscard]] int appendTagged(unsigned char tag, unsigned int value);

    std::vector<unsigned char>& data;  ///< the caller's
};

/// Two texts that make an address; their meaning is the callers'.
struct PAddress {
    PString primary;    ///< the first text
    PString secondary;  ///< the second text
};

/// A text and a number that identify a target; their meaning is the callers'.
///
/// @warning `id` has no value until one is assigned or read: set it before the record is copied or
///          written, or make the record with `PTargetID target{}`.
struct PTargetID {
    PString name;     ///< the text
    unsigned int id;  ///< the number; has no value at first
};

/// A target: its identifier and its address.
struct PTargetInfo {
    PTargetID targetId;  ///< which one
    PAddress address;    ///< where it is
};

/// Writes the records to a stream and reads them back. A class of static operations; an instance
/// holds nothing.
///
/// | record | bytes |
/// |---|---|
/// | `PAddress` | string item `primary`, string item `secondary` |
/// | `PTargetID` | string item `name`, tagged number `id` |
/// | `PTargetInfo` | its `PTargetID`, its `PAddress` |
/// | list of `PTargetInfo` | tagged number (the count), that many `PTargetInfo` |
///
/// The writing operations stop at the first member that fails. There is no rollback: the members
/// before it stay in the stream.
///
/// @warning After a failed write, resize the vector to its size before the call, or the stream
///          ends in half a record.
///
/// The reading operations of single records stop at the first member that fails; members read
/// before it keep their new values. The position stays where the failing member left it: for a text
/// as `PDataReader::readString` says; for a tagged number, cut or with a wrong marker, at its
/// marker.
///
/// Threads: as the stream given to it. Nothing blocks.
class PORTINGLAYER_EXPORT PDataFormaterUtils {
public:
    PDataFormaterUtils();  ///< never needed
    virtual ~PDataFormaterUtils();

    /// Appends `address`: `primary`, then `secondary`.
    ///
    /// @return PERR_OK
    /// @return PERR_NO_MEMORY    the stream cannot grow
    /// @return PERR_DATA_ENCODE  a text cannot be written, see `PDataWriter::writeString`
    [[nodiscard]] static int writePAddress(PDataWriter& writer, PAddress const& address);
    /// Reads `primary`, then `secondary`.
    ///
    /// @return PERR_OK
    /// @return PERR_DATA_SHORT   the stream ends inside the record
    /// @return PERR_DATA_MARKER  a marker byte has another value
    /// @return PERR_DATA_DECODE  a payload cannot be converted
    /// @return PERR_NO_MEMORY    no memory for a text
    [[nodiscard]] static int readPAddress(PDataReader& reader, PAddress& address);

    /// Appends `target`: `name`, then 07 and `id`; codes as `writePAddress`.
    [[nodiscard]] static int writePTargetID(PDataWriter& writer, PTargetID const& target);
    /// Reads `name`, then 07 and `id`; codes as `readPAddress`.
    [[nodiscard]] static int readPTargetID(PDataReader& reader, PTargetID& target);

    /// Appends `info`: its identifier, then its address; codes as `writePAddress`.
    [[nodiscard]] static int writePTargetInfo(PDataWriter& writer, PTargetInfo const& info);
    /// Reads the identifier, then the address; codes as `readPAddress`.
    [[nodiscard]] static int readPTargetInfo(PDataReader& reader, PTargetInfo& info);

    /// Appends 07, the number of records and each record; codes as `writePAddress`. After a failure
    /// the stream holds the full count, the records before the failing one and that one's
    /// beginning.
    [[nodiscard]] static int writePTargetInfoArray(PDataWriter& writer,
                                                   std::vector<PTargetInfo> const& list);

    /// Reads a list of records and appends them to `list`, which is never cleared: what it held
    /// stays in front, and records read before a failure stay. An empty list is accepted anywhere,
    /// unlike an empty list of strings.
    ///
    /// @return PERR_OK
    /// @return PERR_DATA_SHORT   the count is cut: nothing is consumed; or a record is
    /// @return PERR_DATA_MARKER  the first byte is not 07: nothing is consumed; or a marker in a
    ///                           record has another value
    /// @return PERR_DATA_DECODE  a payload in a record cannot be converted
    /// @return PERR_NO_MEMORY    no memory for a record's text, or for `list` to grow
    [[nodiscard]] static int readPTargetInfoArray(PDataReader& reader,
                                                  std::vector<PTargetInfo>& list);
};

#endif
