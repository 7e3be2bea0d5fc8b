#pragma once

#include <windows.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cwchar>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>

/// This test program once more, as a process that runs one of its disabled tests and that can be killed at any moment.
class KilledChild {
public:
    /// Starts the disabled test of this full name ("Suite.DISABLED_Name"). `argument` is what Argument() gives in
    /// there.
    KilledChild(const std::wstring& test, const std::wstring& argument) {
        SetEnvironmentVariableW(kArgument, argument.c_str());
        SetEnvironmentVariableW(kReport,
                                std::to_wstring(reinterpret_cast<std::uintptr_t>(section_.handle.get())).c_str());
        std::array<wchar_t, MAX_PATH> program{};
        GetModuleFileNameW(nullptr, program.data(), MAX_PATH);
        std::wstring command = L"\"" + std::wstring(program.data()) + L"\" --gtest_brief=1 " +
                               L"--gtest_also_run_disabled_tests --gtest_filter=" + test;
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process{};
        if (!CreateProcessW(program.data(), command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                            &process))
            throw std::system_error(static_cast<int>(GetLastError()), std::system_category(),
                                    "starting this program again");
        CloseHandle(process.hThread);
        process_.reset(process.hProcess);
    }
    ~KilledChild() { Kill(); }
    KilledChild(const KilledChild&) = delete;
    KilledChild& operator=(const KilledChild&) = delete;

    /// The number that the child has reported last; 0 before the first.
    long Reported() const { return *section_.number; }

    /// Waits until it has reported this number or a higher one; false when it has ended without.
    bool HasReported(long number) const {
        while (Reported() < number && !HasEnded(1)) {
        }
        return Reported() >= number;
    }
    /// Whether it has ended within the time.
    bool HasEnded(DWORD milliseconds = 0) const {
        return WaitForSingleObject(process_.get(), milliseconds) == WAIT_OBJECT_0;
    }
    /// Waits until it has ended by itself; whether its test passed.
    bool Passed() const {
        DWORD result = 1;
        return HasEnded(INFINITE) && GetExitCodeProcess(process_.get(), &result) && result == 0;
    }
    /// Ends it in the midst of whatever it does.
    void Kill() {
        TerminateProcess(process_.get(), 1);
        HasEnded(INFINITE);
    }

    /// In the child: the argument that it was started with; empty when nobody has started it so.
    static std::wstring Argument() {
        std::array<wchar_t, 1024> text{};
        GetEnvironmentVariableW(kArgument, text.data(), static_cast<DWORD>(text.size()));
        return text.data();
    }
    /// In the child: tells the parent a number, at once and whatever happens afterwards.
    static void Report(long number) {
        static const Section section(InheritedSection());
        *section.number = number;
    }

private:
    static constexpr wchar_t kArgument[] = L"OC_CHILD_ARGUMENT";
    static constexpr wchar_t kReport[] = L"OC_CHILD_REPORT";

    struct Closer {
        void operator()(HANDLE handle) const { CloseHandle(handle); }
    };
    using Handle = std::unique_ptr<void, Closer>;

    /// Memory that both processes see.
    struct Section {
        Handle handle;
        std::atomic<long>* number;

        explicit Section(HANDLE section)
            : handle(section),
              number(static_cast<std::atomic<long>*>(MapViewOfFile(section, FILE_MAP_WRITE, 0, 0, sizeof *number))) {
            if (!number) throw std::runtime_error("No memory is shared with the other process");
        }
        ~Section() { UnmapViewOfFile(number); }
        Section(const Section&) = delete;
        Section& operator=(const Section&) = delete;
    };

    static HANDLE NewSection() {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        return CreateFileMappingW(INVALID_HANDLE_VALUE, &inherited, PAGE_READWRITE, 0, sizeof(std::atomic<long>),
                                  nullptr);
    }
    static HANDLE InheritedSection() {
        std::array<wchar_t, 32> text{};
        GetEnvironmentVariableW(kReport, text.data(), static_cast<DWORD>(text.size()));
        return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(std::wcstoull(text.data(), nullptr, 10)));
    }

    Section section_{NewSection()};
    Handle process_;
};
