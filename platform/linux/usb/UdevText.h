// Texts as udev writes them into its database.
#pragma once

#include <string>

namespace machine {

/// The bytes of a text that udev has encoded: "\x20" for each byte that is not safe (udev_util(3) calls it
/// the _ENC form). What is no such escape stands for itself.
std::string decodeUdev(const std::string& encoded);

}  // namespace machine
