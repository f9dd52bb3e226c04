# Peers that misbehave, on sockets of the system, beside a heap that tells what is in use.
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
  drivelog_proof(network_faults SOURCES network_faults.cpp NetworkFaultTable.cpp RawPeer.cpp
                 USES drivelog_operatelog drivelog_collector OpenSSL::SSL)
endif()
