#include "engine/outputs/http/connection.h"

#include <random>
#include <span>
#include <utility>

#include <boost/asio/write.hpp>
#include <boost/beast/http/read.hpp>

#include "engine/outputs/http/answers.h"

namespace engine::http {
namespace {

namespace asio = boost::asio;
namespace beast_http = boost::beast::http;
using ErrorCode = boost::system::error_code;
using std::chrono::seconds;

constexpr std::uint32_t kMostHeaderBytes = 16U << 10U;
constexpr std::uint64_t kMostBodyBytes = 64U << 10U;
constexpr std::size_t kBatchBytes = 64U << 10U;
constexpr auto kRequestTime = seconds(10);
constexpr auto kWriteTime = seconds(30);  // for what is written in one go
constexpr auto kLeaveTime = seconds(2);
// Who listens has nothing more to say.
constexpr std::size_t kMostReadAway = 64U << 10U;

bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

bool IsGone(const ErrorCode& error) {
    return error == asio::error::eof || error == beast_http::error::end_of_stream ||
           error == asio::error::connection_reset || error == asio::error::operation_aborted;
}

unsigned StatusOf(const ErrorCode& error) {
    return error == beast_http::error::body_limit ? 413 : 400;
}

}  // namespace

Connection::Connection(asio::ip::tcp::socket socket, ConnectionHost& host)
    : socket_(std::move(socket)), host_(host), buffer_(kMostHeaderBytes + kMostBodyBytes) {}

void Connection::Start() {
    ErrorCode ignored;
    socket_.set_option(asio::ip::tcp::no_delay(true), ignored);
    ReadRequest();
}

void Connection::ReadRequest() {
    stage_ = Stage::Reading;
    due_ = Clock::now() + kRequestTime;
    parser_.emplace();
    parser_->header_limit(kMostHeaderBytes);
    parser_->body_limit(kMostBodyBytes);
    if (buffer_.size() > 0) {
        ReadHeader();
        return;
    }
    socket_.async_read_some(
        buffer_.prepare(4096), [self = shared_from_this()](ErrorCode error, std::size_t bytes) {
            if (self->stage_ != Stage::Reading) return;
            if (error) return self->Close();
            self->buffer_.commit(bytes);
            // Players try a binary protocol first, and this one as soon as they are cut off.
            if (!IsLetter(*static_cast<const char*>(self->buffer_.cdata().data())))
                return self->Close();
            self->ReadHeader();
        });
}

void Connection::ReadHeader() {
    beast_http::async_read_header(socket_, buffer_, *parser_,
                                  [self = shared_from_this()](ErrorCode error, std::size_t) {
                                      if (self->stage_ != Stage::Reading) return;
                                      if (IsGone(error)) return self->Close();
                                      if (error) return self->Write(ShortAnswer(StatusOf(error)));
                                      if (self->parser_->get().method() == beast_http::verb::post)
                                          return self->ReadBody();
                                      self->Answer(WhatIsAsked(self->parser_->get()));
                                  });
}

void Connection::ReadBody() {
    beast_http::async_read(socket_, buffer_, *parser_,
                           [self = shared_from_this()](ErrorCode error, std::size_t) {
                               if (self->stage_ != Stage::Reading) return;
                               if (IsGone(error)) return self->Close();
                               if (error) return self->Write(ShortAnswer(StatusOf(error)));
                               self->Answer(WhatIsAsked(self->parser_->get()));
                           });
}

void Connection::Answer(const Asked& asked) {
    using What = Asked::What;
    switch (asked.what) {
        case What::Describe: {
            const std::vector<std::uint8_t> header = FramedHeader(host_.Header());
            std::string text = DescribeAnswer(header.size(), ClientId(), asked.keep_alive);
            if (!asked.head_only) text.append(header.begin(), header.end());
            return Write(std::move(text), asked.keep_alive);
        }
        case What::Play:
            if (asked.head_only) return Write(PlayAnswer(ClientId()));
            return Listen(true, asked.whole_packets);
        case What::Stream:
            if (asked.head_only) return Write(StreamAnswer());
            return Listen(false, true);
        case What::Page:
            return Write(
                TextAnswer("text/html; charset=utf-8", host_.Page(asked.host), asked.head_only));
        case What::Status:
            return Write(TextAnswer("application/json", host_.Status(), asked.head_only));
        case What::Noted:
            return Write(ShortAnswer(204));
        case What::Refusal:
            return Write(ShortAnswer(asked.status));
    }
}

void Connection::Write(std::string text, bool then_read) {
    stage_ = Stage::Answering;
    due_ = Clock::now() + kRequestTime;
    text_ = std::move(text);
    asio::async_write(
        socket_, asio::buffer(text_),
        [self = shared_from_this(), then_read](ErrorCode error, std::size_t /*bytes*/) {
            if (self->stage_ != Stage::Answering) return;
            if (error) return self->Close();
            if (then_read) return self->ReadRequest();
            self->Leave();
        });
}

void Connection::Listen(bool framed, bool whole_packets) {
    if (!host_.Admit()) return Write(ShortAnswer(503));
    stage_ = Stage::Listening;
    was_listening_ = true;
    framed_ = framed;
    whole_packets_ = whole_packets;
    parser_.reset();
    buffer_.clear();
    buffer_.shrink_to_fit();
    const std::vector<std::uint8_t>& header = host_.Header();
    const std::vector<std::uint8_t> shown = framed_ ? FramedHeader(header) : header;
    text_ = framed_ ? PlayAnswer(ClientId()) : StreamAnswer();
    text_.append(shown.begin(), shown.end());
    for (const LivePacketPtr& packet : host_.History()) queue_.Push(packet);
    buffers_.assign(1, asio::buffer(text_));
    WriteBuffers();
    ReadAway();
}

void Connection::Send(std::span<const LivePacketPtr> packets) {
    if (stage_ != Stage::Listening || ended_) return;
    for (const LivePacketPtr& packet : packets) queue_.Push(packet);
    if (const std::uint64_t frames = queue_.TakeWithheld(); frames > 0) host_.Withheld(frames);
    if (queue_.IsHopeless()) return Close();
    Pump();
}

void Connection::End() {
    if (stage_ == Stage::Reading) return Close();
    ended_ = true;
    Pump();
}

void Connection::Pump() {
    if (writing_ || stage_ != Stage::Listening) return;
    FillBatch();
    if (buffers_.empty() && ended_) {
        if (!framed_ || std::exchange(end_written_, true)) return Leave();
        buffers_.emplace_back(kEndOfStream.data(), kEndOfStream.size());
    }
    if (!buffers_.empty()) WriteBuffers();
}

// Parts of packets that all clients share, each frame of this one's own between them.
void Connection::FillBatch() {
    buffers_.clear();
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < kBatch && bytes < kBatchBytes && !queue_.IsEmpty(); ++i) {
        batch_[i] = queue_.Pop();
        const LivePacket& packet = *batch_[i];
        const asf::UnpaddedPacket& unpadded = packet.unpadded;
        const std::size_t size = whole_packets_ ? packet.bytes.size() : unpadded.size;
        bytes += size;
        if (framed_) {
            frames_[i] = FrameOfData(packet.number, counter_++, size);
            buffers_.emplace_back(frames_[i].data(), frames_[i].size());
        }
        if (whole_packets_) {
            buffers_.emplace_back(packet.bytes.data(), size);
        } else {
            buffers_.emplace_back(unpadded.head.data(), unpadded.head.size());
            buffers_.emplace_back(packet.bytes.data() + unpadded.head.size(),
                                  size - unpadded.head.size());
        }
    }
}

void Connection::WriteBuffers() {
    writing_ = true;
    due_ = Clock::now() + kWriteTime;
    asio::async_write(socket_, std::span<const asio::const_buffer>(buffers_),
                      [self = shared_from_this()](ErrorCode error, std::size_t bytes) {
                          self->writing_ = false;
                          self->batch_.fill(nullptr);
                          if (self->stage_ != Stage::Listening) return;
                          self->host_.Sent(bytes);
                          if (error) return self->Close();
                          self->due_ = Clock::time_point::max();
                          self->Pump();
                      });
}

// What is not read when a connection is closed makes the other side lose what it was sent.
void Connection::Leave() {
    stage_ = Stage::Leaving;
    due_ = Clock::now() + kLeaveTime;
    ErrorCode error;
    socket_.shutdown(asio::ip::tcp::socket::shutdown_send, error);
    if (error) return Close();
    ReadAway();
}

void Connection::ReadAway() {
    if (std::exchange(reading_away_, true)) return;
    socket_.async_read_some(asio::buffer(away_),
                            [self = shared_from_this()](ErrorCode error, std::size_t bytes) {
                                self->reading_away_ = false;
                                self->read_away_ += bytes;
                                if (error || self->read_away_ > kMostReadAway) return self->Close();
                                self->ReadAway();
                            });
}

void Connection::Check(Clock::time_point now) {
    if (now < due_) return;
    if (stage_ != Stage::Reading || buffer_.size() == 0) return Close();
    stage_ = Stage::Answering;
    ErrorCode ignored;
    socket_.cancel(ignored);
    Write(ShortAnswer(408));
}

void Connection::Close() {
    if (stage_ == Stage::Closed) return;
    stage_ = Stage::Closed;
    ErrorCode ignored;
    socket_.close(ignored);
    host_.Closed(was_listening_);
}

std::uint32_t Connection::ClientId() {
    static_assert(sizeof(std::random_device::result_type) >= 4);
    return static_cast<std::uint32_t>(std::random_device{}()) | 1U;
}

}  // namespace engine::http
