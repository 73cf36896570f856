// Lossless streams of selection value 1. Other streams, and whatever is found damaged, go to the
// library: what is made of damage is the same as it ever was.
#include "foundation/engines/jpeg/jpeg_coders.h"
#include "foundation/engines/jpeg/jpeg_samples.h"
#include "foundation/engines/lossless/lossless_bytes.h"
#include "foundation/engines/lossless/lossless_rows.h"
#include "foundation/engines/lossless/lossless_scan.h"
#include "foundation/types/answer.h"
#include "foundation/types/cancellation.h"
#include "foundation/types/progress.h"

#include <algorithm>
#include <vector>

namespace quorvex {
namespace {

constexpr std::size_t kMostBytesOfSample = 4;  // a code of 16 bits and 15 of a difference
constexpr std::uint8_t kFirstRestart = 0xD0;

std::unique_ptr<JpegLineDecoder> MakeLibraryDecoder(JpegInput& input, const JpegHeader& header) {
    return header.precision > 8 ? Make16BitLosslessDecoder(input) : Make8BitLosslessDecoder(input);
}

/// A stream from its beginning once more: what was read of it so far, then the rest.
class Replay {
public:
    Replay(JpegInput& input, std::vector<unsigned char> stream)
        : stream_(std::move(stream)), left_(stream_), rest_(input), input_(this, Give) {}

    [[nodiscard]] JpegInput& Input() noexcept { return input_; }

private:
    static int Give(int event, void* context, unsigned char** buffer,
                    std::uint16_t* length) noexcept {
        auto& replay = *static_cast<Replay*>(context);
        if (event == kJpegReadEnd) return 0;
        if (replay.left_.empty()) replay.left_ = replay.rest_.Next();
        const auto block =
            replay.left_.first(std::min<std::size_t>(replay.left_.size(), kJpegBufferBytes));
        replay.left_ = replay.left_.subspan(block.size());
        static unsigned char none;
        // Nobody writes to what is given.
        *buffer = block.empty() ? &none : const_cast<unsigned char*>(block.data());
        *length = static_cast<std::uint16_t>(block.size());
        return 0;
    }

    std::vector<unsigned char> stream_;
    std::span<const unsigned char> left_;
    JpegInput& rest_;
    JpegInput input_;
};

class LosslessDecoder final : public JpegLineDecoder {
public:
    explicit LosslessDecoder(JpegInput& input) noexcept : input_(input) {}

    [[nodiscard]] bool Start(const JpegDecodingOrder& order) override {
        order_ = order;
        if (Begin()) return true;
        library_ = MakeLibraryDecoder(input_, order.header);
        return library_->Start(order);
    }

    [[nodiscard]] int Read(unsigned char* rows, int lines) noexcept override {
        int read = 0;
        const auto cancellation = Cancellation::OfThisThread();
        const bool isDone = Contain(false, [&] {
            while (library_ == nullptr && read < lines && !cancellation.IsAsked() &&
                   ReadLine(rows)) {
                rows += rowBytes_;
                ++read;
                ++linesDone_;
                TellProgress(static_cast<std::size_t>(linesDone_), order_.header.height);
            }
            return true;
        });
        if (!isDone) brokeOff_ = true;
        return library_ == nullptr ? read : read + library_->Read(rows, lines - read);
    }

    [[nodiscard]] bool BrokeOff() const noexcept override {
        return brokeOff_ || (library_ != nullptr && library_->BrokeOff());
    }
    [[nodiscard]] long Warnings() const noexcept override {
        return library_ != nullptr ? library_->Warnings() : (brokeOff_ ? 1 : 0);
    }
    [[nodiscard]] bool IsOurs() const noexcept override { return library_ == nullptr; }

private:
    [[nodiscard]] bool Begin() {
        const auto scan = ReadLosslessScan(input_.Head(), order_.header);
        if (!scan || order_.toRgb || !BuildTables(*scan)) return false;
        const JpegHeader& header = order_.header;
        const std::size_t samples = std::size_t{header.width} * header.componentCount;
        isWidened_ = header.precision <= 8 && order_.bytesPerSample == 2;
        if (isWidened_) line_.resize(samples);
        rowBytes_ = samples * static_cast<std::size_t>(order_.bytesPerSample);
        MakeRows(*scan);
        rowsInInterval_ = scan->rowsInInterval;
        rowsToGo_ = rowsInInterval_;
        bytes_.emplace(input_, scan->dataPlace, kMostBytesOfSample * samples);
        BeginInterval(bytes_->First());
        return true;
    }

    [[nodiscard]] bool BuildTables(const LosslessScan& scan) {
        for (std::size_t i = 0; i < order_.header.componentCount; ++i) {
            const std::size_t table = scan.tableOf[i];
            if (tables_[table] != nullptr) continue;
            tables_[table] = std::make_unique<LosslessTable>();
            if (!tables_[table]->Build(*scan.tables[table], scan.pointTransform)) return false;
        }
        return true;
    }

    void MakeRows(const LosslessScan& scan) {
        std::array<const LosslessTable*, 3> tables{};
        for (std::size_t i = 0; i < order_.header.componentCount; ++i) {
            tables[i] = tables_[scan.tableOf[i]].get();
        }
        const bool isColour = order_.header.componentCount == 3;
        if (order_.header.precision > 8) {
            rows_ = isColour ? Rows<std::uint16_t, 3>(tables) : Rows<std::uint16_t, 1>(tables);
        } else {
            rows_ = isColour ? Rows<std::uint8_t, 3>(tables) : Rows<std::uint8_t, 1>(tables);
        }
    }
    template <class Sample, std::size_t Components>
    [[nodiscard]] std::unique_ptr<LosslessRowReader> Rows(
        const std::array<const LosslessTable*, 3>& tables) const {
        return std::make_unique<LosslessRows<Sample, Components>>(tables, order_.header.width);
    }

    void BeginInterval(const unsigned char* first) noexcept {
        reader_ = {.next = first};
        first_.fill(1U << (order_.header.precision - 1));
    }

    /// False at the end of a stream that breaks off, and where the library has to take over.
    [[nodiscard]] bool ReadLine(unsigned char* row) {
        if (brokeOff_) return false;
        const bool isWhole = PassRestart() && ReadSamples(row);
        if (!isWhole && !brokeOff_) TurnToLibrary();
        return isWhole;
    }

    [[nodiscard]] bool ReadSamples(unsigned char* row) {
        reader_.next = bytes_->Supply(reader_.next);
        unsigned char* samples = isWidened_ ? line_.data() : row;
        if (!rows_->Read(reader_, first_, samples)) return false;
        if (bytes_->IsAtEnd() && bytes_->BitsLeft(reader_.next, reader_.held) < 0) {
            brokeOff_ = bytes_->Marker() == 0;
            return false;
        }
        if (isWidened_) StoreSamples<unsigned char>(line_, row, order_.bytesPerSample);
        return true;
    }

    /// False where the next bytes are not the restart marker that is due.
    [[nodiscard]] bool PassRestart() {
        if (rowsInInterval_ == 0) return true;
        if (rowsToGo_ == 0) {
            reader_.next = bytes_->Supply(reader_.next);
            const bool isDue = bytes_->IsAtEnd() && bytes_->Marker() == kFirstRestart + restart_ &&
                               bytes_->BitsLeft(reader_.next, reader_.held) < 8;
            if (!isDue) return false;
            restart_ = static_cast<std::uint8_t>((restart_ + 1) % 8);
            rowsToGo_ = rowsInInterval_;
            BeginInterval(bytes_->NextInterval());
        }
        --rowsToGo_;
        return true;
    }

    /// Continues with the library after the lines that are done.
    void TurnToLibrary() {
        auto replay = std::make_unique<Replay>(input_, std::move(bytes_->StreamSoFar()));
        auto library = MakeLibraryDecoder(replay->Input(), order_.header);
        std::vector<unsigned char> line(rowBytes_);
        bool isThere = library->Start(order_);
        for (int i = 0; isThere && i < linesDone_; ++i)
            isThere = library->Read(line.data(), 1) == 1;
        replay_ = std::move(replay);
        library_ = std::move(library);
    }

    JpegInput& input_;
    JpegDecodingOrder order_;
    std::array<std::unique_ptr<LosslessTable>, 4> tables_;
    std::unique_ptr<LosslessRowReader> rows_;
    std::optional<LosslessBytes> bytes_;
    LosslessBits reader_;
    LosslessPixel first_{};
    std::size_t rowBytes_ = 0;
    int rowsInInterval_ = 0;
    int rowsToGo_ = 0;
    std::uint8_t restart_ = 0;
    bool isWidened_ = false;
    std::vector<unsigned char> line_;
    int linesDone_ = 0;
    bool brokeOff_ = false;
    std::unique_ptr<Replay> replay_;  // outlives the library's decoder
    std::unique_ptr<JpegLineDecoder> library_;
};

}  // namespace

std::unique_ptr<JpegLineDecoder> MakeLosslessDecoder(JpegInput& input) {
    return std::make_unique<LosslessDecoder>(input);
}

}  // namespace quorvex
