// Manages the CIM server's users: cimuser add|remove|list|passwd.

#include <Pegasus/Security/UserFile.h>
#include <Pegasus/Server/CIMServerConfig.h>

#include <CLI/CLI.hpp>

#include <iostream>
#include <string>

#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

using namespace Pegasus;

namespace {

// One line from standard input, not echoed when it is a terminal.
std::string readPassword(const std::string& prompt) {
    const bool terminal = ::isatty(STDIN_FILENO) != 0;
    struct termios saved {};
    if (terminal) {
        std::cerr << prompt << std::flush;
        ::tcgetattr(STDIN_FILENO, &saved);
        struct termios quiet = saved;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(STDIN_FILENO, TCSANOW, &quiet);
    }
    std::string line;
    const bool got = static_cast<bool>(std::getline(std::cin, line));
    if (terminal) {
        ::tcsetattr(STDIN_FILENO, TCSANOW, &saved);
        std::cerr << std::endl;
    }
    if (!got) throw UserFile::Error("no password given on standard input");
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return line;
}

std::string passwordFileOf(const std::string& configFile) {
    const std::string file = configFile.empty() ? CIMServerConfig::defaultFile() : configFile;
    struct stat info;
    if (configFile.empty() && ::stat(file.c_str(), &info) != 0) return CIMServerConfig().passwordFile;
    return CIMServerConfig::load(file).passwordFile;
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app{"Manages the users of the CIM server"};
    app.require_subcommand(1);
    std::string configFile, user, password;
    bool passwordGiven = false;
    app.add_option("--config", configFile, "The server's configuration file, to find its password file");

    auto* add = app.add_subcommand("add", "Add a user");
    add->add_option("user", user, "User name")->required();
    add->add_option("--password", password, "Password (read from standard input when not given)");
    auto* remove = app.add_subcommand("remove", "Remove a user");
    remove->add_option("user", user, "User name")->required();
    app.add_subcommand("list", "List the users");
    auto* passwd = app.add_subcommand("passwd", "Change a user's password");
    passwd->add_option("user", user, "User name")->required();
    passwd->add_option("--password", password, "New password (read from standard input when not given)");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e);
    }
    passwordGiven = add->count("--password") > 0 || passwd->count("--password") > 0;

    try {
        UserFile users(passwordFileOf(configFile));
        if (app.got_subcommand(add)) {
            UserFile::validateUserName(user);
            if (users.hasUser(user)) {
                std::cerr << "cimuser: the user " << user << " exists already" << std::endl;
                return 2;
            }
            if (!passwordGiven) password = readPassword("Password for " + user + ": ");
            users.addUser(user, password);
            std::cout << "user " << user << " added" << std::endl;
        } else if (app.got_subcommand(remove)) {
            if (!users.hasUser(user)) {
                std::cerr << "cimuser: no user " << user << std::endl;
                return 2;
            }
            users.removeUser(user);
            std::cout << "user " << user << " removed" << std::endl;
        } else if (app.got_subcommand(passwd)) {
            if (!users.hasUser(user)) {
                std::cerr << "cimuser: no user " << user << std::endl;
                return 2;
            }
            if (!passwordGiven) password = readPassword("New password for " + user + ": ");
            users.setPassword(user, password);
            std::cout << "password of " << user << " changed" << std::endl;
        } else {
            for (const std::string& name : users.listUsers()) std::cout << name << std::endl;
        }
    } catch (const ConfigError& e) {
        std::cerr << "cimuser: " << e.what() << std::endl;
        return 1;
    } catch (const UserFile::Error& e) {
        std::cerr << "cimuser: " << e.what() << std::endl;
        return 1;
    }
    return 0;
}
