// Compares functions of the library with the plainest code that does the same input and output, or
// shows as many buttons. Takes the options of Google Benchmark. The figures go to standard error:
// standard output, where the functions print, goes to /dev/null.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QPushButton>
#include <QTemporaryDir>
#include <QVBoxLayout>
#include <array>
#include <cstdio>
#include <fstream>
#include <iostream>

#include "applicationsetup.h"
#include "hub_utilities.h"
#include "network.h"
#include "networkselectionwindow.h"
#include "screen_pieces.h"

namespace {

constexpr char output_command[] = "yes 0123456789abcdef0123456789abcdef | head -c 67108864";

void write_registry(std::int64_t lines) {
    std::ofstream registry("networks.data");
    for (std::int64_t i = 0; i < lines; ++i) {
        registry << "network" << i << "|/srv/networks/network" << i << "|\n";
    }
}

void registry_ours(benchmark::State& state, std::int64_t lines) {
    write_registry(lines);
    for ([[maybe_unused]] auto _ : state) {
        std::vector<Network*> networks;
        read_hub_networks(&networks);
        state.PauseTiming();
        qDeleteAll(networks);
        state.ResumeTiming();
    }
}

void registry_plain(benchmark::State& state, std::int64_t lines) {
    write_registry(lines);
    for ([[maybe_unused]] auto _ : state) {
        std::vector<std::pair<std::string, std::string>> fields;
        std::ifstream registry("networks.data");
        for (std::string line; std::getline(registry, line);) {
            std::cout << line << std::endl;
            const std::size_t bar = line.find('|');
            fields.emplace_back(line.substr(0, bar), line.substr(bar + 1, line.size() - bar - 2));
        }
        benchmark::DoNotOptimize(fields);
    }
}

void command_ours(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(exec_cmd(output_command));
    }
}

void command_plain(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        std::FILE* pipe = popen(output_command, "r");
        std::array<char, 128> buffer{};
        std::string output;
        while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), pipe) != nullptr) {
            output += buffer.data();
        }
        pclose(pipe);
        benchmark::DoNotOptimize(output);
    }
}

void show_once(QDialog& window) {
    window.show();
    QCoreApplication::processEvents();
}

void home_screen(benchmark::State& state, std::int64_t networks) {
    write_registry(networks);
    const ApplicationSetup setup;
    for ([[maybe_unused]] auto _ : state) {
        NetworkSelectionWindow window(nullptr);
        show_once(window);
    }
}

void show_buttons(benchmark::State& state, std::int64_t buttons, const QString& page_style) {
    for ([[maybe_unused]] auto _ : state) {
        QDialog window;
        window.setStyleSheet(page_style);
        auto* column = new QVBoxLayout(&window);
        for (std::int64_t i = 0; i < buttons; ++i) {
            auto* button = new QPushButton(QStringLiteral("network%1").arg(i));
            button->setProperty("class", QStringLiteral("net-btn"));
            column->addWidget(button);
        }
        window.setFixedSize(800, 400);
        show_once(window);
    }
}

void bare_buttons(benchmark::State& state, std::int64_t buttons) {
    qApp->setStyleSheet(QString());
    show_buttons(state, buttons, QString());
}

void styled_buttons(benchmark::State& state, std::int64_t buttons) {
    const ApplicationSetup setup;
    show_buttons(state, buttons, QString::fromLatin1(white_page_style));
}

/// Adds two benchmarks, named ROW/ours and ROW/plain.
template <typename Ours, typename Plain, typename... Size>
void compare(const std::string& row, Ours ours, Plain plain, Size... size) {
    const auto add = [&](const char* side, auto function) {
        benchmark::RegisterBenchmark((row + side).c_str(), function, size...)
            ->Unit(benchmark::kMillisecond);
    };
    add("/ours", ours);
    add("/plain", plain);
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (std::freopen("/dev/null", "w", stdout) == nullptr) {
        return 1;
    }
    const QTemporaryDir folder;
    QDir::setCurrent(folder.path());
    QFile::link(QStringLiteral(SOURCE_DIR "/img"), QStringLiteral("img"));
    QFile::link(QStringLiteral(SOURCE_DIR "/runtime/style.qss"), QStringLiteral("style.qss"));
    compare("Registry, lines: 100000", registry_ours, registry_plain, 100000);
    compare("Command output, 64 MiB", command_ours, command_plain);
    for (const std::int64_t count : {10, 1000, 10000}) {
        const std::string row = "Home screen, networks: " + std::to_string(count);
        compare(row + ", bare buttons", home_screen, bare_buttons, count);
        compare(row + ", styled buttons", home_screen, styled_buttons, count);
    }
    benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_None);
    reporter.SetOutputStream(&std::cerr);
    reporter.SetErrorStream(&std::cerr);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
